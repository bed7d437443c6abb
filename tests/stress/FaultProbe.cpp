// Makes every kind of call that the library of failing calls intercepts, and prints each result; or the time.

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void show(const char* name, long answer)
{
    std::printf("%s %s\n", name, answer < 0 ? strerrorname_np(errno) : "ok");
}

void showCount(const char* name, long answer)
{
    std::printf("%s %s %ld\n", name, answer < 0 ? strerrorname_np(errno) : "ok", answer);
}

} // namespace

// probe FOLDER [time]: with "time", prints only the time.
int main(int argumentCount, char** arguments)
{
    if (argumentCount > 2)
        return std::printf("%ld\n", static_cast<long>(std::time(nullptr))) > 0 ? 0 : 1;
    if (chdir(arguments[1]) != 0)
        return 1;
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    char bytes[9] = "12345678";
    struct stat status { };
    const int file = open("file", O_RDWR | O_CREAT, 0600);
    show("open", file);
    const int again = openat(AT_FDCWD, "file", O_RDONLY);
    show("openat", again);
    showCount("write", write(file, bytes, 8));
    showCount("pwrite", pwrite(file, bytes, 8, 8));
    showCount("read", read(again, bytes, 8));
    showCount("pread", pread(file, bytes, 8, 0));
    show("stat", stat("file", &status));
    show("lstat", lstat("file", &status));
    show("fstat", fstat(file, &status));
    show("fstatat", fstatat(AT_FDCWD, "file", &status, 0));
    show("flock", flock(file, LOCK_EX | LOCK_NB));
    show("fsync", fsync(file));
    show("fdatasync", fdatasync(file));
    show("ftruncate", ftruncate(file, 4));
    show("fchmod", fchmod(file, 0640));
    const int renamed = rename("file", "other");
    show("rename", renamed);
    void* map = mmap(nullptr, 4, PROT_READ, MAP_SHARED, file, 0);
    show("mmap", map == MAP_FAILED ? -1 : 0);
    void* memory = std::malloc(1000);
    show("malloc", memory == nullptr ? -1 : 0);
    std::free(memory);
    show("mkdir", mkdir("folder", 0700));
    sockaddr nowhere{};
    show("connect", connect(file, &nowhere, sizeof nowhere));
    show("close", close(file));
    show("unlink", unlink(renamed == 0 ? "other" : "file"));
    return 0;
}
