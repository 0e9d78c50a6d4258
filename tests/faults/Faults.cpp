// Preloaded into the program: fails one of its calls to the system or to the allocator.
//
// main() is not begun at once, but by a child for each line that comes in, so that libraries are
// loaded once. FAULT_SERVER names two descriptors, "IN,OUT". In comes a line a run, its parts
// between tabs:
//
//   the folder  in which it works, also for temporary files
//   call        the group of calls that are counted: read, write, ..., malloc (kGroups)
//   at          which of them fails, from 1; 0: none, they are only counted
//   error       the errno that it fails with; "short": it does half of its work
//   all         1: all that follow fail, too; 0: no other
//   log         a file that receives, at the end, a line "GROUP N" for each group of calls; "hit"
//               and the frames from which the failing call came; "site N" for the first call of
//               each chain of callers (malloc, counting); "terminate" and "crash", and the frames
//               of the end. Standard output and error go to files of its name with .out and .err
//
// Out go the child's number and, once it has ended, its status, a line each.
//
// Counting begins with main(): what a library does as it is loaded, the loader cannot survive.
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>
#include <unwind.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
}

namespace {

enum Group {
  kOpen,
  kRead,
  kWrite,
  kSync,
  kClose,
  kRename,
  kUnlink,
  kMmap,
  kTruncate,
  kStat,
  kThread,
  kMalloc
};
constexpr std::array kGroups = {"open",   "read", "write",    "sync", "close",  "rename",
                                "unlink", "mmap", "truncate", "stat", "thread", "malloc"};

constexpr int kNoFault = -1;
constexpr int kShort = -2;
constexpr std::size_t kChain = 6;  // frames that tell one place of allocation from another
constexpr int kMostFrames = 60;
constexpr std::size_t kMostSites = 1U << 18;

int gCall = -1;
long gAt = 0;
int gError = kNoFault;
bool gbKeep = false;
int gLog = -1;
std::atomic<bool> gbArmed{false};
std::array<std::atomic<long>, kGroups.size()> gCalls{};
std::array<std::atomic<std::uint64_t>, kMostSites> gSites{};
thread_local bool gtBusy = false;  // at work for a call of its own

// Without a library call: those may be what is being failed.
void Say(const char* word, const std::uintptr_t* numbers, std::size_t n) {
  char line[512];
  std::size_t length = 0;
  while (*word != '\0') line[length++] = *word++;
  for (std::size_t i = 0; i < n && length + 20 < sizeof line; ++i) {
    char digits[20];
    int count = 0;
    for (std::uintptr_t left = numbers[i]; count == 0 || left > 0; left /= 10) {
      digits[count++] = static_cast<char>('0' + left % 10);
    }
    line[length++] = ' ';
    while (count > 0) line[length++] = digits[--count];
  }
  line[length++] = '\n';
  if (gLog >= 0) syscall(SYS_write, gLog, line, length);
}

struct Chain {
  std::uintptr_t fFrames[16] = {};
  std::size_t fCount = 0;
  std::size_t fMost;
};

_Unwind_Reason_Code Note(_Unwind_Context* context, void* data) {
  Chain& chain = *static_cast<Chain*>(data);
  if (chain.fCount == chain.fMost) return _URC_END_OF_STACK;
  chain.fFrames[chain.fCount++] = _Unwind_GetIP(context);
  return _URC_NO_REASON;
}

Chain Callers(std::size_t most) {
  Chain chain;
  chain.fMost = most;
  gtBusy = true;
  _Unwind_Backtrace(Note, &chain);
  gtBusy = false;
  return chain;
}

// Where the program is, a line a frame below the word.
void SayFrames(const char* word) {
  static std::atomic_flag isSaying;
  void* frames[kMostFrames];
  gtBusy = true;
  for (int wait = 0; isSaying.test_and_set() && wait < 1000; ++wait) usleep(1000);
  Say(word, nullptr, 0);
  backtrace_symbols_fd(frames, backtrace(frames, kMostFrames), gLog);
  isSaying.clear();
  gtBusy = false;
}

// Whether a call from there is the first.
bool IsNewSite(const Chain& chain) {
  std::uint64_t hash = 1469598103934665603U;
  for (std::size_t i = 0; i < chain.fCount; ++i) hash = (hash ^ chain.fFrames[i]) * 1099511628211U;
  for (std::size_t slot = hash % kMostSites;; slot = (slot + 1) % kMostSites) {
    std::uint64_t found = 0;
    if (gSites[slot].compare_exchange_strong(found, hash)) return true;
    if (found == hash) return false;
  }
}

// What this call of a group is to fail with; kNoFault: it is to do its work.
int Fault(Group group) {
  if (!gbArmed || gtBusy) return kNoFault;
  const long number = ++gCalls[group];
  if (group != gCall) return kNoFault;
  if (gAt == 0 && group == kMalloc && IsNewSite(Callers(kChain))) {
    const auto site = static_cast<std::uintptr_t>(number);
    Say("site", &site, 1);
  }
  if (gAt == 0 || number < gAt || (number > gAt && !gbKeep)) return kNoFault;
  if (number == gAt) SayFrames("hit");
  return gError;
}

// errno and what a function returns that has failed.
template <class Result>
Result Failed(int error, Result result) {
  errno = error == kShort ? EIO : error;
  return result;
}

template <class Function>
Function* Next(Function* /*own*/, const char* name) {
  gtBusy = true;
  void* next = dlsym(RTLD_NEXT, name);
  gtBusy = false;
  return reinterpret_cast<Function*>(next);
}

#define NEXT(name) static const auto next = Next(&name, #name)

void SayCalls() {
  for (std::size_t i = 0; i < kGroups.size(); ++i) {
    const auto calls = static_cast<std::uintptr_t>(gCalls[i].load());
    Say(kGroups[i], &calls, 1);
  }
}

// The descriptor far from the numbers that the program sees.
int Apart(int file) {
  const int high = fcntl(file, F_DUPFD_CLOEXEC, 900);
  close(file);
  return high;
}

// A file to write to. Not by open(), which is defined below.
int New(const char* path) {
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND, 0666));
}

// Of a line that came in. The parts are those at the top.
void Set(const std::array<const char*, 6>& parts) {
  const auto [folder, call, at, error, all, log] = parts;
  while (++gCall < static_cast<int>(kGroups.size()) && std::strcmp(call, kGroups[gCall]) != 0) {
  }
  gAt = atol(at);
  gError = std::strcmp(error, "short") == 0 ? kShort : atoi(error);
  gbKeep = *all == '1';
  gLog = Apart(New(log));
  for (const int file : {STDOUT_FILENO, STDERR_FILENO}) {
    char path[1024];
    snprintf(path, sizeof path, "%s.%s", log, file == STDOUT_FILENO ? "out" : "err");
    const int opened = New(path);
    dup2(opened, file);
    close(opened);
  }
  setenv("TMPDIR", folder, 1);
  if (chdir(folder) != 0) abort();
}

// Begins a child for each line, and comes back in the children alone.
void Serve(int in, int out) {
  char line[4096];
  for (std::size_t length = 0;
       length < sizeof line && syscall(SYS_read, in, line + length, 1) == 1;) {
    if (line[length++] != '\n') continue;
    line[length - 1] = '\0';
    length = 0;
    const pid_t child = fork();
    if (child == 0) {
      close(in);
      close(out);
      std::array<const char*, 6> parts{};
      char* left = line;
      for (const char*& part : parts) part = strsep(&left, "\t");
      return Set(parts);
    }
    dprintf(out, "%d\n", child);
    int status = 0;
    waitpid(child, &status, 0);
    dprintf(out, "%d\n", status);
  }
  syscall(SYS_exit_group, 0);
}

__attribute__((destructor)) void End() { SayCalls(); }

int (*gMain)(int, char**, char**) = nullptr;
std::terminate_handler gOwnTerminate = nullptr;

void OnTerminate() {
  SayFrames("terminate");
  gOwnTerminate();
}

void OnCrash(int number) {
  SayFrames("crash");
  signal(number, SIG_DFL);
  raise(number);
}

int ArmedMain(int argc, char** argv, char** environment) {
  gOwnTerminate = std::get_terminate();
  std::set_terminate(OnTerminate);
  // Some libraries call themselves without end.
  static std::array<char, 1 << 18> gStack;
  const stack_t stack{gStack.data(), 0, gStack.size()};
  sigaltstack(&stack, nullptr);
  struct sigaction crash {};
  crash.sa_handler = OnCrash;
  crash.sa_flags = SA_ONSTACK;
  for (const int number : {SIGSEGV, SIGBUS, SIGABRT}) sigaction(number, &crash, nullptr);
  int in = -1;
  int out = -1;
  if (sscanf(getenv("FAULT_SERVER"), "%d,%d", &in, &out) != 2) abort();
  unsetenv("LD_PRELOAD");  // children of the program are not meant
  Serve(Apart(in), Apart(out));
  gbArmed = true;
  return gMain(argc, argv, environment);
}

// The arguments that a call has only where it makes a file.
mode_t ModeOf(int flags, va_list arguments) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

int __libc_start_main(int (*main)(int, char**, char**), int argc, char** argv, void (*init)(),
                      void (*fini)(), void (*end)(), void* stack) {
  static const auto next =
      reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
  gMain = main;
  return next(&ArmedMain, argc, argv, init, fini, end, stack);
}

void _exit(int code) {
  SayCalls();
  syscall(SYS_exit_group, code);
  __builtin_unreachable();
}
void _Exit(int code) { _exit(code); }

#define OPENS(name)                                                         \
  int name(const char* path, int flags, ...) {                              \
    NEXT(name);                                                             \
    va_list arguments;                                                      \
    va_start(arguments, flags);                                             \
    const mode_t mode = ModeOf(flags, arguments);                           \
    va_end(arguments);                                                      \
    const int fault = Fault(kOpen);                                         \
    return fault == kNoFault ? next(path, flags, mode) : Failed(fault, -1); \
  }
OPENS(open)
OPENS(open64)

#define OPENS_AT(name)                                                              \
  int name(int folder, const char* path, int flags, ...) {                          \
    NEXT(name);                                                                     \
    va_list arguments;                                                              \
    va_start(arguments, flags);                                                     \
    const mode_t mode = ModeOf(flags, arguments);                                   \
    va_end(arguments);                                                              \
    const int fault = Fault(kOpen);                                                 \
    return fault == kNoFault ? next(folder, path, flags, mode) : Failed(fault, -1); \
  }
OPENS_AT(openat)
OPENS_AT(openat64)

// A function of that many arguments that does its work or fails.
#define PLAIN(group, result, name, parameters, arguments, failed)              \
  result name parameters {                                                     \
    NEXT(name);                                                                \
    const int fault = Fault(group);                                            \
    return fault == kNoFault ? next arguments : Failed<result>(fault, failed); \
  }
PLAIN(kOpen, FILE*, fopen, (const char* path, const char* mode), (path, mode), nullptr)
PLAIN(kOpen, FILE*, fopen64, (const char* path, const char* mode), (path, mode), nullptr)
PLAIN(kOpen, int, dup, (int file), (file), -1)
PLAIN(kSync, int, fsync, (int file), (file), -1)
PLAIN(kSync, int, fdatasync, (int file), (file), -1)
PLAIN(kRename, int, rename, (const char* from, const char* to), (from, to), -1)
PLAIN(kRename, int, renameat, (int a, const char* from, int b, const char* to), (a, from, b, to),
      -1)
PLAIN(kRename, int, renameat2, (int a, const char* from, int b, const char* to, unsigned flags),
      (a, from, b, to, flags), -1)
PLAIN(kRename, int, link, (const char* from, const char* to), (from, to), -1)
PLAIN(kRename, int, linkat, (int a, const char* from, int b, const char* to, int flags),
      (a, from, b, to, flags), -1)
PLAIN(kUnlink, int, unlink, (const char* path), (path), -1)
PLAIN(kUnlink, int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags), -1)
PLAIN(kMmap, void*, mmap, (void* at, size_t size, int access, int flags, int file, off_t from),
      (at, size, access, flags, file, from), MAP_FAILED)
PLAIN(kMmap, void*, mmap64, (void* at, size_t size, int access, int flags, int file, off64_t from),
      (at, size, access, flags, file, from), MAP_FAILED)
PLAIN(kTruncate, int, ftruncate, (int file, off_t size), (file, size), -1)
PLAIN(kTruncate, int, ftruncate64, (int file, off64_t size), (file, size), -1)
PLAIN(kTruncate, int, posix_fallocate, (int file, off_t from, off_t size), (file, from, size), EIO)
PLAIN(kStat, int, stat, (const char* path, struct stat* found), (path, found), -1)
PLAIN(kStat, int, stat64, (const char* path, struct stat64* found), (path, found), -1)
PLAIN(kStat, int, fstat, (int file, struct stat* found), (file, found), -1)
PLAIN(kStat, int, fstat64, (int file, struct stat64* found), (file, found), -1)
PLAIN(kStat, off_t, lseek, (int file, off_t to, int from), (file, to, from), -1)
PLAIN(kStat, off64_t, lseek64, (int file, off64_t to, int from), (file, to, from), -1)
PLAIN(kStat, int, fchmod, (int file, mode_t mode), (file, mode), -1)
PLAIN(kStat, int, flock, (int file, int how), (file, how), -1)
PLAIN(kStat, int, mkdir, (const char* path, mode_t mode), (path, mode), -1)
PLAIN(kStat, int, mkstemp, (char* path), (path), -1)
PLAIN(kStat, int, mkstemp64, (char* path), (path), -1)

void* mremap(void* at, size_t size, size_t wanted, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  void* to = (flags & MREMAP_FIXED) != 0 ? va_arg(arguments, void*) : nullptr;
  va_end(arguments);
  NEXT(mremap);
  const int fault = Fault(kMmap);
  return fault == kNoFault ? next(at, size, wanted, flags, to) : Failed(fault, MAP_FAILED);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                   void* argument) {
  NEXT(pthread_create);
  return Fault(kThread) == kNoFault ? next(thread, attributes, run, argument) : EAGAIN;
}

// They close all the same, as a disk's late error has it.
int close(int file) {
  NEXT(close);
  const int fault = Fault(kClose);
  const int result = next(file);
  return fault == kNoFault ? result : Failed(fault, -1);
}
int fclose(FILE* file) {
  NEXT(fclose);
  const int fault = Fault(kClose);
  const int result = next(file);
  return fault == kNoFault ? result : Failed(fault, EOF);
}

// What moves bytes may also move fewer than it was asked for.
#define MOVES(group, name, parameters, arguments, halved)                   \
  ssize_t name parameters {                                                 \
    NEXT(name);                                                             \
    const int fault = Fault(group);                                         \
    if (fault == kShort) return next halved;                                \
    return fault == kNoFault ? next arguments : Failed<ssize_t>(fault, -1); \
  }
#define HALF(n) ((n) > 1 ? (n) / 2 : (n))
MOVES(kRead, read, (int file, void* to, size_t n), (file, to, n), (file, to, HALF(n)))
MOVES(kRead, pread, (int file, void* to, size_t n, off_t at), (file, to, n, at),
      (file, to, HALF(n), at))
MOVES(kRead, pread64, (int file, void* to, size_t n, off64_t at), (file, to, n, at),
      (file, to, HALF(n), at))
MOVES(kWrite, write, (int file, const void* from, size_t n), (file, from, n), (file, from, HALF(n)))
MOVES(kWrite, pwrite, (int file, const void* from, size_t n, off_t at), (file, from, n, at),
      (file, from, HALF(n), at))
MOVES(kWrite, pwrite64, (int file, const void* from, size_t n, off64_t at), (file, from, n, at),
      (file, from, HALF(n), at))
MOVES(kWrite, writev, (int file, const iovec* parts, int n), (file, parts, n),
      (file, parts, HALF(n)))

// Standard output, whose own calls do not come by here. What is said of failures is not meant.
size_t fwrite(const void* from, size_t size, size_t n, FILE* file) {
  NEXT(fwrite);
  const int fault = file == stderr ? kNoFault : Fault(kWrite);
  if (fault == kNoFault) return next(from, size, n, file);
  return Failed<size_t>(fault, 0);
}
int fflush(FILE* file) {
  NEXT(fflush);
  const int fault = file == stdout ? Fault(kWrite) : kNoFault;
  return fault == kNoFault ? next(file) : Failed(fault, EOF);
}

void* malloc(size_t size) {
  return Fault(kMalloc) == kNoFault ? __libc_malloc(size) : Failed<void*>(ENOMEM, nullptr);
}
void* calloc(size_t n, size_t size) {
  return Fault(kMalloc) == kNoFault ? __libc_calloc(n, size) : Failed<void*>(ENOMEM, nullptr);
}
void* realloc(void* old, size_t size) {
  return Fault(kMalloc) == kNoFault ? __libc_realloc(old, size) : Failed<void*>(ENOMEM, nullptr);
}
void* memalign(size_t alignment, size_t size) {
  return Fault(kMalloc) == kNoFault ? __libc_memalign(alignment, size)
                                    : Failed<void*>(ENOMEM, nullptr);
}
void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }
int posix_memalign(void** place, size_t alignment, size_t size) {
  if (Fault(kMalloc) != kNoFault) return ENOMEM;
  *place = __libc_memalign(alignment, size);
  return *place == nullptr ? ENOMEM : 0;
}

}  // extern "C"
