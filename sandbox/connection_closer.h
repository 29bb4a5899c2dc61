// Closing a connection without sending a response, for the fault that makes
// a client see no status line at all.
//
// cpp-httplib hands a route handler the request but not its socket, and calls
// its socket-options hook only for the listening socket. The handler does know
// both ends' ports, so the server side of the connection is found among the
// process's open sockets as the one whose local and peer ports match. Only
// that connection can match, and its handler thread holds it open meanwhile,
// so no other socket can be touched by mistake.

#ifndef OBOLO_SANDBOX_CONNECTION_CLOSER_H_
#define OBOLO_SANDBOX_CONNECTION_CLOSER_H_

namespace obolo::sandbox {

// Shuts down both directions of the accepted connection whose local port is
// `local_port` and whose peer port is `peer_port`, without closing the
// descriptor (the server closes it later as usual; what it writes meanwhile
// is lost). False when no such socket is open. Linux only: it reads
// /proc/self/fd.
bool ShutdownConnection(int local_port, int peer_port);

}  // namespace obolo::sandbox

#endif  // OBOLO_SANDBOX_CONNECTION_CLOSER_H_
