/* obolo-bench-peak-rss PROGRAM [ARGUMENT...]: runs the program with its
 * output discarded and prints its peak resident set size in KiB, then exits
 * with the program's exit status (127 when it cannot be run).
 *
 * Why a launcher: Linux counts a process's peak RSS across exec(), starting
 * from what the forked copy of its parent had. A child of obolo-bench would
 * therefore never report less than obolo-bench's own peak. This launcher is
 * small (C, no C++ runtime), so the floor it passes on is its own ~1 MiB. */

#include <fcntl.h>
#include <stdio.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

int main(int argc, char** argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: %s PROGRAM [ARGUMENT...]\n", argv[0]);
    return 2;
  }
  fflush(stdout);
  const pid_t pid = fork();
  if (pid < 0) return 127;
  if (pid == 0) {
    const int null_fd = open("/dev/null", O_RDWR);
    if (null_fd >= 0) {
      dup2(null_fd, STDIN_FILENO);
      dup2(null_fd, STDOUT_FILENO);
      dup2(null_fd, STDERR_FILENO);
    }
    execv(argv[1], argv + 1);
    _exit(127);
  }
  int status = 0;
  struct rusage usage;
  if (wait4(pid, &status, 0, &usage) != pid) return 127;
  printf("%ld\n", usage.ru_maxrss);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 127;
}
