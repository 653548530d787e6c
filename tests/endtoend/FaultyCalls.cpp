// SPDX-License-Identifier: MIT
// To be loaded before the program's libraries: fails one call of a kind on files below a folder,
// as a bad disk or a network home does. STRANDLOOM_FAULT holds "KIND NUMBER ERRNO FOLDER", and the
// file FOLDER.failed is made when that call came.
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{

struct Fault {
    char kind[16] = "";
    int number = 0;
    int code = 0;
    char folder[4000] = "";

    Fault()
    {
        if (const char *const text = getenv("STRANDLOOM_FAULT"))
            sscanf(text, "%15s %d %d %3999s", kind, &number, &code, folder);
    }
};

const Fault &fault()
{
    static const Fault read;
    return read;
}

bool isBelow(const char *path)
{
    const size_t length = strlen(fault().folder);
    return path && length > 0 && strncmp(path, fault().folder, length) == 0 && path[length] == '/';
}

bool isBelow(int descriptor)
{
    char path[4000];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const auto size = syscall(SYS_readlinkat, AT_FDCWD, link.c_str(), path, sizeof path - 1);
    if (size < 0)
        return false;
    path[size] = 0;
    return isBelow(path);
}

template <typename File>
bool fails(std::string_view kind, File file)
{
    static std::atomic<int> calls{0};
    if (kind != fault().kind || !isBelow(file) || ++calls != fault().number)
        return false;
    const std::string report = std::string(fault().folder) + ".failed";
    syscall(SYS_close, syscall(SYS_openat, AT_FDCWD, report.c_str(), O_CREAT | O_WRONLY, 0600));
    errno = fault().code;
    return true;
}

int openAt(int folder, const char *path, int flags, va_list arguments)
{
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, mode_t) : 0;
    if (fails("open", path))
        return -1;
    return int(syscall(SYS_openat, folder, path, flags, mode));
}

} // namespace

#define OPEN(NAME, PARAMETERS, FOLDER)                                                             \
    int NAME PARAMETERS                                                                            \
    {                                                                                              \
        va_list arguments;                                                                         \
        va_start(arguments, flags);                                                                \
        const int opened = openAt(FOLDER, path, flags, arguments);                                 \
        va_end(arguments);                                                                         \
        return opened;                                                                             \
    }
#define CALL(TYPE, KIND, NAME, PARAMETERS, FILE, ...)                                              \
    TYPE NAME PARAMETERS                                                                           \
    {                                                                                              \
        return fails(KIND, FILE) ? -1 : TYPE(syscall(__VA_ARGS__));                                \
    }

extern "C" {
// NOLINTBEGIN
#undef stat64
#undef lstat64
OPEN(open, (const char *path, int flags, ...), AT_FDCWD)
OPEN(open64, (const char *path, int flags, ...), AT_FDCWD)
OPEN(openat, (int folder, const char *path, int flags, ...), folder)
OPEN(openat64, (int folder, const char *path, int flags, ...), folder)
CALL(ssize_t, "read", read, (int fd, void *to, size_t n), fd, SYS_read, fd, to, n)
CALL(ssize_t, "read", pread, (int fd, void *to, size_t n, off_t at), fd, SYS_pread64, fd, to, n, at)
CALL(ssize_t, "read", pread64, (int fd, void *to, size_t n, off64_t at), fd, SYS_pread64, fd, to, n,
     at)
CALL(ssize_t, "write", write, (int fd, const void *of, size_t n), fd, SYS_write, fd, of, n)
CALL(ssize_t, "write", pwrite, (int fd, const void *of, size_t n, off_t at), fd, SYS_pwrite64, fd,
     of, n, at)
CALL(ssize_t, "write", pwrite64, (int fd, const void *of, size_t n, off64_t at), fd, SYS_pwrite64,
     fd, of, n, at)
CALL(int, "write", ftruncate, (int fd, off_t size) noexcept, fd, SYS_ftruncate, fd, size)
CALL(int, "write", ftruncate64, (int fd, off64_t size) noexcept, fd, SYS_ftruncate, fd, size)
CALL(int, "sync", fsync, (int fd), fd, SYS_fsync, fd)
CALL(int, "sync", fdatasync, (int fd), fd, SYS_fdatasync, fd)
CALL(int, "close", close, (int fd), fd, SYS_close, fd)
CALL(int, "lock", flock, (int fd, int how) noexcept, fd, SYS_flock, fd, how)
CALL(int, "name", mkdir, (const char *path, mode_t mode) noexcept, path, SYS_mkdir, path, mode)
CALL(int, "name", rename, (const char *from, const char *to) noexcept, to, SYS_rename, from, to)
CALL(int, "name", renameat2,
     (int f, const char *from, int t, const char *to, unsigned flags) noexcept, to, SYS_renameat2,
     f, from, t, to, flags)
CALL(int, "name", link, (const char *from, const char *to) noexcept, to, SYS_link, from, to)
CALL(int, "name", linkat, (int f, const char *from, int t, const char *to, int flags) noexcept, to,
     SYS_linkat, f, from, t, to, flags)
CALL(int, "name", unlink, (const char *path) noexcept, path, SYS_unlink, path)
CALL(int, "look", access, (const char *path, int mode) noexcept, path, SYS_access, path, mode)
CALL(int, "look", stat, (const char *path, struct stat *to) noexcept, path, SYS_stat, path, to)
CALL(int, "look", lstat, (const char *path, struct stat *to) noexcept, path, SYS_lstat, path, to)
CALL(int, "look", fstat, (int fd, struct stat *to) noexcept, fd, SYS_fstat, fd, to)
CALL(int, "look", stat64, (const char *path, struct stat64 *to) noexcept, path, SYS_stat, path, to)
CALL(int, "look", lstat64, (const char *path, struct stat64 *to) noexcept, path, SYS_lstat, path,
     to)
CALL(int, "look", fstat64, (int fd, struct stat64 *to) noexcept, fd, SYS_fstat, fd, to)
CALL(int, "look", statx,
     (int at, const char *path, int flags, unsigned mask, struct statx *to) noexcept, path,
     SYS_statx, at, path, flags, mask, to)
// NOLINTEND
}
