// SPDX-License-Identifier: GPL-3.0-or-later
// Preloaded into the program (LD_PRELOAD), this is a disk on which tests can rely to fail. What it
// does is told by the environment:
//
//   DISK_SNAPSHOTS  a folder. At each synchronisation the file is copied there as it was when the
//                   call began, which is what a power cut after the call leaves of it. The copy is
//                   named NUMBER-TIME-NAME after the time at which the call ended, in ns of the
//                   monotonic clock. A folder that is synchronised leaves an empty file.
//   DISK_SLOW       a file that says how many ms longer each synchronisation takes.
//   DISK_FULL       a file that lists patterns of paths, one to a line, as the shell has them.
//                   There is no more room for a file that one of them matches: half of what is
//                   written first is taken, and nothing of what follows.
//
// Both files may come, change and go away while the program runs. Files without a name cannot be
// had here, as on some file systems: each is known by its path while it is written.

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include <dlfcn.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

template<typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

using Open = int(const char *, int, ...);
using Write = ssize_t(int, const void *, size_t);
using WriteAt = ssize_t(int, const void *, size_t, off_t);
using WriteParts = ssize_t(int, const iovec *, int);
using Synchronise = int(int);

std::string pathOf(int descriptor)
{
    char path[4096];
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), path, sizeof path);
    return length < 0 ? std::string() : std::string(path, static_cast<size_t>(length));
}

/// Whether there is no more room for the file behind @p descriptor.
bool isFull(int descriptor)
{
    static const char *const list = getenv("DISK_FULL");
    struct stat status = {};
    if (list == nullptr || fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const std::string path = pathOf(descriptor);
    std::ifstream patterns(list);
    for (std::string pattern; std::getline(patterns, pattern);) {
        if (fnmatch(pattern.c_str(), path.c_str(), 0) == 0)
            return true;
    }
    return false;
}

/// How many of @p count bytes still fit, or -1 with errno set when none does.
ssize_t roomFor(int descriptor, size_t count)
{
    static std::atomic<int> lastFull = -1;
    if (!isFull(descriptor)) {
        int expected = descriptor;
        lastFull.compare_exchange_strong(expected, -1);
        return static_cast<ssize_t>(count);
    }
    if (count > 1 && lastFull.exchange(descriptor) != descriptor)
        return static_cast<ssize_t>(count / 2);
    errno = ENOSPC;
    return -1;
}

/// The mode that follows @p flags among the arguments of a call, if any does.
mode_t modeAfter(int flags, va_list arguments)
{
    return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

int openNamed(const char *name, const char *path, int flags, mode_t mode)
{
    if ((flags & O_TMPFILE) == O_TMPFILE) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return next<Open>(name)(path, flags, mode);
}

std::string contentOf(int descriptor)
{
    std::ifstream file("/proc/self/fd/" + std::to_string(descriptor), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int synchronise(int descriptor, const char *name)
{
    static const char *const snapshots = getenv("DISK_SNAPSHOTS");
    static const char *const slow = getenv("DISK_SLOW");
    static std::atomic<int> number = 0;

    struct stat status = {};
    const bool isFolder = fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
    const std::string content = snapshots == nullptr || isFolder ? "" : contentOf(descriptor);
    int delay = 0;
    if (slow != nullptr && std::ifstream(slow) >> delay)
        std::this_thread::sleep_for(std::chrono::milliseconds(delay));
    const int result = next<Synchronise>(name)(descriptor);
    if (snapshots == nullptr || result != 0)
        return result;

    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    const std::string path = pathOf(descriptor);
    const std::string file =
        std::to_string(++number) + '-' +
        std::to_string(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count()) + '-' +
        path.substr(path.find_last_of('/') + 1);
    const std::string folder = snapshots;
    // Readers see only copies that are complete.
    const std::string unfinished = folder + "/." + file;
    std::ofstream(unfinished, std::ios::binary) << content;
    std::rename(unfinished.c_str(), (folder + '/' + file).c_str());
    return result;
}

} // namespace

extern "C" {

int open(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeAfter(flags, arguments);
    va_end(arguments);
    return openNamed("open", path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeAfter(flags, arguments);
    va_end(arguments);
    return openNamed("open64", path, flags, mode);
}

ssize_t write(int descriptor, const void *data, size_t count)
{
    const ssize_t room = roomFor(descriptor, count);
    return room < 0 ? room : next<Write>("write")(descriptor, data, static_cast<size_t>(room));
}

ssize_t pwrite64(int descriptor, const void *data, size_t count, off_t offset)
{
    const ssize_t room = roomFor(descriptor, count);
    return room < 0
               ? room
               : next<WriteAt>("pwrite64")(descriptor, data, static_cast<size_t>(room), offset);
}

ssize_t writev(int descriptor, const iovec *parts, int count)
{
    if (isFull(descriptor)) {
        errno = ENOSPC;
        return -1;
    }
    return next<WriteParts>("writev")(descriptor, parts, count);
}

int fsync(int descriptor)
{
    return synchronise(descriptor, "fsync");
}

int fdatasync(int descriptor)
{
    return synchronise(descriptor, "fdatasync");
}
}
