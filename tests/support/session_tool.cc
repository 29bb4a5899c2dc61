// obolo_session_tool STORE write DEVICE ACCESS REFRESH EMAIL CUSTOMER_ID
// obolo_session_tool STORE write-loop COUNT     (writes sessions 0..COUNT-1, each as the kit stores a
//                                              login, printing each round once it is durable)
// obolo_session_tool STORE read
//
// Writes or reads the reader's session through GlobalVariable with the SQLite
// store at STORE. `read` prints one line per key: name=value. Lines the kit
// logs are silenced so the output is only the session.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "entry/global_variable.h"
#include "platform/log.h"
#include "platform/sqlite_preference_store.h"

int main(int argc, char** argv) {
  using obolo::GlobalVariable;
  if (argc < 3) return 2;
  obolo::SetLogSink(obolo::NullLogSink());
  obolo::PreferenceStore::setStandard(std::make_shared<obolo::SqlitePreferenceStore>(argv[1]));
  GlobalVariable& global = GlobalVariable::shared();
  const std::string command = argv[2];
  if (command == "write" && argc == 8) {
    global.setDeviceKey(argv[3]);
    global.setAccessToken(argv[4]);
    global.setRefreshToken(argv[5]);
    global.setEmail(argv[6]);
    global.setCustomerId(std::strtoll(argv[7], nullptr, 10));
    return 0;
  }
  if (command == "write-loop" && argc == 4) {
    // Each round writes every key with the round's number, so a reader can
    // tell old values from new ones after the writer is killed.
    const long rounds = std::strtol(argv[3], nullptr, 10);
    std::printf("ready\n");
    std::fflush(stdout);
    for (long round = 0; round < rounds; ++round) {
      const std::string n = std::to_string(round);
      {
        // As the kit stores a login: one write group.
        const obolo::PreferenceWriteGroup session = global.sessionWriteGroup();
        global.setDeviceKey("device-" + n);
        global.setAccessToken("access-" + n);
        global.setRefreshToken("refresh-" + n);
        global.setEmail("reader" + n + "@example.com");
        global.setCustomerId(round);
      }
      std::printf("%ld\n", round);
      std::fflush(stdout);
    }
    return 0;
  }
  if (command == "read") {
    std::printf("deviceKey=%s\n", global.getDeviceKey().c_str());
    std::printf("accessToken=%s\n", global.getAccessToken().c_str());
    std::printf("refreshToken=%s\n", global.getRefreshToken().c_str());
    std::printf("email=%s\n", global.getEmail().c_str());
    std::printf("customerId=%lld\n", static_cast<long long>(global.getCustomerId()));
    return 0;
  }
  return 2;
}
