// A pause of Wine's is a select for what is left of it by the wall clock, which it looks at twice: when it works out the end,
// and when it works out what is left. A clock that is set back in between makes the pause as long as the step, where one of
// Windows, which does not count by that clock, would be as long as ever. No pause of the tests lasts so long: end it.

#define _GNU_SOURCE
#include <dlfcn.h>
#include <stddef.h>
#include <sys/select.h>

enum { LONGEST_PAUSE_SECONDS = 600 };

typedef int (*Select)(int, fd_set *, fd_set *, fd_set *, struct timeval *);

int select(int count, fd_set *readable, fd_set *writable, fd_set *failed, struct timeval *timeout) {
  if (count == 0 && timeout != NULL && timeout->tv_sec > LONGEST_PAUSE_SECONDS) {
    return 0;
  }
  const Select next = (Select)dlsym(RTLD_NEXT, "select");
  return next(count, readable, writable, failed, timeout);
}
