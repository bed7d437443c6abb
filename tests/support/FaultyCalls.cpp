// A library to be preloaded into a program, which makes one of its calls fail.
//
// QUORVANE_FAULT: faults separated by commas, each CALL:NUMBER:FAULT. CALL is a name of `callNames`, or "any"
// for all calls but "allocate". NUMBER counts such calls from 1; with a "+" appended, all later calls fail as
// well. FAULT is an error number, "short" for half of the requested read or write, "kill" for SIGKILL instead
// of the call, or "cut" for half of the call, then SIGKILL.
// QUORVANE_CALL_COUNTS: a file of `callCount` 64-bit numbers, in which the calls of each kind are counted,
// including the one that kills.
// QUORVANE_CLOCK: seconds by which time() is ahead, or behind.
//
// Calls made inside the C library, as in fopen(), are not intercepted. Allocations are intercepted only once
// main() has begun, and not those of libcrypto, which aborts when memory runs out during its initialization.

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <type_traits>

#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

enum class Call : unsigned {
    any,
    open,
    read,
    write,
    stat,
    close,
    sync,
    truncate,
    chmod,
    rename,
    unlink,
    mkdir,
    lock,
    map,
    connect,
    allocate
};
constexpr std::size_t callCount = 16;
constexpr std::array<const char*, callCount> callNames{"any", "open", "read", "write", "stat", "close",
    "sync", "truncate", "chmod", "rename", "unlink", "mkdir", "lock", "map", "connect", "allocate"};

enum class Fault { none, error, half, kill, cut };

struct Order {
    Call call = Call::any;
    std::uint64_t number = 0; // 0: never
    bool goesOn = false;
    Fault fault = Fault::none;
    int error = 0;
};

using Counts = std::array<std::atomic<std::uint64_t>, callCount>;

// Not on the heap, since allocations are intercepted too.
std::array<Order, 8> orders;
Counts ownCounts{};
Counts* counts = nullptr; // null before the library is initialized
std::time_t clockShift = 0;

Call callNamed(const char* name, std::size_t length)
{
    for (std::size_t call = 0; call < callCount; ++call) {
        if (std::strlen(callNames[call]) == length && std::strncmp(callNames[call], name, length) == 0)
            return static_cast<Call>(call);
    }
    std::abort();
}

Order orderFrom(const char* text)
{
    Order order;
    const char* colon = std::strchr(text, ':');
    if (colon == nullptr)
        std::abort();
    order.call = callNamed(text, static_cast<std::size_t>(colon - text));
    char* end = nullptr;
    order.number = std::strtoull(colon + 1, &end, 10);
    order.goesOn = *end == '+';
    const char* fault = end + (order.goesOn ? 2 : 1);
    order.fault = *fault == 's' ? Fault::half
        : *fault == 'k'         ? Fault::kill
        : *fault == 'c'         ? Fault::cut
                                : Fault::error;
    order.error = std::atoi(fault);
    return order;
}

void readOrders()
{
    std::size_t number = 0;
    for (const char* text = std::getenv("QUORVANE_FAULT");
         text != nullptr && *text != '\0' && number < orders.size();) {
        orders[number++] = orderFrom(text);
        text = std::strchr(text, ',');
        text += text != nullptr ? 1 : 0;
    }
}

// By raw system calls, which are not counted.
Counts* sharedCounts()
{
    const char* path = std::getenv("QUORVANE_CALL_COUNTS");
    if (path == nullptr)
        return &ownCounts;
    const long file = syscall(SYS_openat, AT_FDCWD, path, O_RDWR | O_CLOEXEC);
    // All of type long: of a shorter argument the kernel may read undefined upper bits.
    const long memory = syscall(
        SYS_mmap, nullptr, sizeof(Counts), long{PROT_READ | PROT_WRITE}, long{MAP_SHARED}, file, 0L);
    syscall(SYS_close, file);
    return file < 0 || memory == -1 ? &ownCounts : reinterpret_cast<Counts*>(memory);
}

[[gnu::constructor]] void setUp()
{
    readOrders();
    if (const char* seconds = std::getenv("QUORVANE_CLOCK"))
        clockShift = std::atol(seconds);
    counts = sharedCounts();
}

Order countedOrder(Call call)
{
    const std::uint64_t number = ++(*counts)[static_cast<std::size_t>(call)];
    const std::uint64_t ofAny = call == Call::allocate ? 0 : ++(*counts)[static_cast<std::size_t>(Call::any)];
    for (const Order& order : orders) {
        const std::uint64_t at = order.call == call ? number : order.call == Call::any ? ofAny : 0;
        if (order.number != 0 && (at == order.number || (order.goesOn && at > order.number)))
            return order;
    }
    return {};
}

// The fault for this call.
Fault faultOf(Call call)
{
    if (counts == nullptr)
        return Fault::none;
    const Order order = countedOrder(call);
    if (order.fault == Fault::error)
        errno = order.error;
    if (order.fault == Fault::kill)
        syscall(SYS_kill, getpid(), SIGKILL);
    return order.fault;
}

bool hasBegun = false; // main()

// The address range of libcrypto's code, determined once, since every allocation needs it.
std::uintptr_t cryptoBegin = 0;
std::uintptr_t cryptoEnd = 0;

[[maybe_unused]] int noteCrypto(dl_phdr_info* library, std::size_t /*size*/, void* /*none*/)
{
    if (std::strstr(library->dlpi_name, "libcrypto") == nullptr)
        return 0;
    for (int each = 0; each < library->dlpi_phnum; ++each) {
        const auto& segment = library->dlpi_phdr[each];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0)
            continue;
        cryptoBegin = library->dlpi_addr + segment.p_vaddr;
        cryptoEnd = cryptoBegin + segment.p_memsz;
    }
    return 1;
}

[[maybe_unused]] bool memoryFails(const void* caller)
{
    const auto address = reinterpret_cast<std::uintptr_t>(caller);
    if (!hasBegun || (address >= cryptoBegin && address < cryptoEnd))
        return false;
    return faultOf(Call::allocate) == Fault::error;
}

// The function that the program would have called without this library.
template <class Function> Function* next(Function* /*typeOnly*/, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// A call that is performed or not.
template <class Function, class... Arguments>
auto whole(Call call, Function* function, std::invoke_result_t<Function*, Arguments...> failure,
    Arguments... arguments)
{
    switch (faultOf(call)) {
    case Fault::error:
        return failure;
    case Fault::cut:
        function(arguments...);
        syscall(SYS_kill, getpid(), SIGKILL);
        break;
    default:
        break;
    }
    return function(arguments...);
}

// A call that moves `size` bytes.
template <class Do> ssize_t counted(Call call, std::size_t size, Do doIt)
{
    const std::size_t half = size < 2 ? size : size / 2;
    switch (faultOf(call)) {
    case Fault::error:
        return -1;
    case Fault::half:
        return doIt(half);
    case Fault::cut:
        doIt(half);
        syscall(SYS_kill, getpid(), SIGKILL);
        break;
    default:
        break;
    }
    return doIt(size);
}

mode_t modeOf(int flags, va_list more)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
}

} // namespace

#define QUORVANE_NEXT(name) (next(&::name, #name))
#define QUORVANE_OPEN(name)                                                                                  \
    int name(const char* path, int flags, ...)                                                               \
    {                                                                                                        \
        va_list more;                                                                                        \
        va_start(more, flags);                                                                               \
        const mode_t mode = modeOf(flags, more);                                                             \
        va_end(more);                                                                                        \
        static const auto call = reinterpret_cast<int (*)(const char*, int, mode_t)>(QUORVANE_NEXT(name));   \
        return whole(Call::open, call, -1, path, flags, mode);                                               \
    }
#define QUORVANE_OPENAT(name)                                                                                \
    int name(int folder, const char* path, int flags, ...)                                                   \
    {                                                                                                        \
        va_list more;                                                                                        \
        va_start(more, flags);                                                                               \
        const mode_t mode = modeOf(flags, more);                                                             \
        va_end(more);                                                                                        \
        static const auto call                                                                               \
            = reinterpret_cast<int (*)(int, const char*, int, mode_t)>(QUORVANE_NEXT(name));                 \
        return whole(Call::open, call, -1, folder, path, flags, mode);                                       \
    }
#define QUORVANE_WHOLE(kind, type, name, failure, parameters, ...)                                           \
    type name parameters                                                                                     \
    {                                                                                                        \
        static const auto call = QUORVANE_NEXT(name);                                                        \
        return whole(Call::kind, call, failure, __VA_ARGS__);                                                \
    }

extern "C" {

QUORVANE_OPEN(open)
QUORVANE_OPEN(open64)
QUORVANE_OPENAT(openat)
QUORVANE_OPENAT(openat64)
QUORVANE_WHOLE(open, int, mkostemp, -1, (char* path, int flags), path, flags)
QUORVANE_WHOLE(open, int, mkostemp64, -1, (char* path, int flags), path, flags)

ssize_t read(int file, void* bytes, size_t size)
{
    static const auto call = QUORVANE_NEXT(read);
    return counted(Call::read, size, [=](size_t count) { return call(file, bytes, count); });
}
ssize_t pread(int file, void* bytes, size_t size, off_t at)
{
    static const auto call = QUORVANE_NEXT(pread);
    return counted(Call::read, size, [=](size_t count) { return call(file, bytes, count, at); });
}
ssize_t pread64(int file, void* bytes, size_t size, off64_t at)
{
    static const auto call = QUORVANE_NEXT(pread64);
    return counted(Call::read, size, [=](size_t count) { return call(file, bytes, count, at); });
}
ssize_t write(int file, const void* bytes, size_t size)
{
    static const auto call = QUORVANE_NEXT(write);
    return counted(Call::write, size, [=](size_t count) { return call(file, bytes, count); });
}
ssize_t pwrite(int file, const void* bytes, size_t size, off_t at)
{
    static const auto call = QUORVANE_NEXT(pwrite);
    return counted(Call::write, size, [=](size_t count) { return call(file, bytes, count, at); });
}
ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t at)
{
    static const auto call = QUORVANE_NEXT(pwrite64);
    return counted(Call::write, size, [=](size_t count) { return call(file, bytes, count, at); });
}

// Only locks are counted.
#define QUORVANE_FCNTL(name)                                                                                 \
    int name(int file, int command, ...)                                                                     \
    {                                                                                                        \
        va_list more;                                                                                        \
        va_start(more, command);                                                                             \
        void* argument = va_arg(more, void*);                                                                \
        va_end(more);                                                                                        \
        static const auto call = reinterpret_cast<int (*)(int, int, void*)>(QUORVANE_NEXT(name));            \
        const bool isLock = command == F_SETLK || command == F_SETLKW;                                       \
        return isLock ? whole(Call::lock, call, -1, file, command, argument)                                 \
                      : call(file, command, argument);                                                       \
    }
QUORVANE_FCNTL(fcntl)
QUORVANE_FCNTL(fcntl64)

// close() releases the descriptor even when it reports a failure.
int close(int file)
{
    static const auto call = QUORVANE_NEXT(close);
    const Fault fault = faultOf(Call::close);
    const int error = errno;
    const int result = call(file);
    if (fault == Fault::cut)
        syscall(SYS_kill, getpid(), SIGKILL);
    if (fault != Fault::error)
        return result;
    errno = error;
    return -1;
}

QUORVANE_WHOLE(stat, int, stat, -1, (const char* path, struct stat* status) noexcept, path, status)
QUORVANE_WHOLE(stat, int, stat64, -1, (const char* path, struct stat64* status) noexcept, path, status)
QUORVANE_WHOLE(stat, int, lstat, -1, (const char* path, struct stat* status) noexcept, path, status)
QUORVANE_WHOLE(stat, int, lstat64, -1, (const char* path, struct stat64* status) noexcept, path, status)
QUORVANE_WHOLE(stat, int, fstat, -1, (int file, struct stat* status) noexcept, file, status)
QUORVANE_WHOLE(stat, int, fstat64, -1, (int file, struct stat64* status) noexcept, file, status)
QUORVANE_WHOLE(stat, int, fstatat, -1,
    (int folder, const char* path, struct stat* status, int flags) noexcept, folder, path, status, flags)
QUORVANE_WHOLE(stat, int, fstatat64, -1,
    (int folder, const char* path, struct stat64* status, int flags) noexcept, folder, path, status, flags)
QUORVANE_WHOLE(sync, int, fsync, -1, (int file), file)
QUORVANE_WHOLE(sync, int, fdatasync, -1, (int file), file)
QUORVANE_WHOLE(truncate, int, ftruncate, -1, (int file, off_t size) noexcept, file, size)
QUORVANE_WHOLE(truncate, int, ftruncate64, -1, (int file, off64_t size) noexcept, file, size)
QUORVANE_WHOLE(chmod, int, fchmod, -1, (int file, mode_t mode) noexcept, file, mode)
QUORVANE_WHOLE(chmod, int, chmod, -1, (const char* path, mode_t mode) noexcept, path, mode)
QUORVANE_WHOLE(rename, int, rename, -1, (const char* from, const char* to) noexcept, from, to)
QUORVANE_WHOLE(rename, int, renameat2, -1,
    (int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept, fromFolder,
    from, toFolder, to, flags)
QUORVANE_WHOLE(unlink, int, unlink, -1, (const char* path) noexcept, path)
QUORVANE_WHOLE(mkdir, int, mkdir, -1, (const char* path, mode_t mode) noexcept, path, mode)
QUORVANE_WHOLE(lock, int, flock, -1, (int file, int operation) noexcept, file, operation)
QUORVANE_WHOLE(connect, int, connect, -1, (int socket, const sockaddr* address, socklen_t length), socket,
    address, length)
QUORVANE_WHOLE(map, void*, mmap, MAP_FAILED,
    (void* address, size_t size, int protection, int flags, int file, off_t at) noexcept, address, size,
    protection, flags, file, at)
QUORVANE_WHOLE(map, void*, mmap64, MAP_FAILED,
    (void* address, size_t size, int protection, int flags, int file, off64_t at) noexcept, address, size,
    protection, flags, file, at)

time_t time(time_t* result) noexcept
{
    static const auto call = QUORVANE_NEXT(time);
    const time_t now = call(nullptr) + clockShift;
    if (result != nullptr)
        *result = now;
    return now;
}

// The address sanitizer has its own allocator.
#ifndef QUORVANE_SANITIZED
using Main = int (*)(int, char**, char**);
Main programsMain = nullptr;

int beginMain(int argumentCount, char** arguments, char** environment)
{
    dl_iterate_phdr(noteCrypto, nullptr);
    hasBegun = true;
    return programsMain(argumentCount, arguments, environment);
}

int __libc_start_main(Main main, int argumentCount, char** arguments, void (*init)(), void (*fini)(),
    void (*loaderFini)(), void* stackEnd)
{
    using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
    const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
    programsMain = main;
    return start(beginMain, argumentCount, arguments, init, fini, loaderFini, stackEnd);
}

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);

void* malloc(size_t size) noexcept
{
    return memoryFails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) noexcept
{
    return memoryFails(__builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, size_t size) noexcept
{
    return memoryFails(__builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}
#endif

} // extern "C"
