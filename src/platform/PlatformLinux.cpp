// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "platform/Platform.h"

#include <QDir>
#include <QFile>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <ctime>
#include <mutex>
#include <string>
#include <vector>

#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <pthread.h>
#include <sys/auxv.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

std::atomic<int> forkWatches{0};
std::atomic<bool> forkedChild{false};

std::atomic<int> connection{-1};
std::atomic<ino_t> connectionInode{0};

/// Of an open socket; 0 for anything else. No two sockets have the same.
ino_t inodeOfSocket(int descriptor)
{
    struct stat info
    {
    };
    return descriptor >= 0 && fstat(descriptor, &info) == 0 && S_ISSOCK(info.st_mode) ? info.st_ino : 0;
}

void markForkedChild()
{
    forkedChild = forkedChild || forkWatches > 0;
    // The parent may have closed it, and opened something else under its number.
    const int copy = connection.exchange(-1);
    const ino_t inode = inodeOfSocket(copy);
    if (inode != 0 && inode == connectionInode)
        close(copy);
}

/// While the library is loaded: a child forked during a later registration would miss the handler.
const int forkHandler = pthread_atfork(nullptr, nullptr, &markForkedChild);

pid_t kernelThreadId()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

class LinuxThread : public Thread
{
public:
    ~LinuxThread() override
    {
        if (m_started && !m_joined)
            pthread_detach(m_thread);
    }

    bool start(std::function<int()> routine)
    {
        auto argument = std::make_unique<std::function<int()>>(std::move(routine));
        const BlockedSignals blocked;
        m_started = pthread_create(&m_thread, nullptr, &LinuxThread::run, argument.get()) == 0;
        if (m_started)
            static_cast<void>(argument.release()); // now the thread's
        return m_started;
    }

    bool hasEnded() const override { return m_joined || !isOfThisProcess(); }

    bool isOfThisProcess() const override { return getpid() == m_process; }

    bool isCurrent() const override { return !hasEnded() && pthread_equal(pthread_self(), m_thread) != 0; }

    bool join(int timeoutMs) override
    {
        if (!hasEnded())
            m_joined = (timeoutMs < 0 ? pthread_join(m_thread, nullptr) : timedJoin(timeoutMs)) == 0;
        return hasEnded();
    }

private:
    static void* run(void* argument)
    {
        const std::unique_ptr<std::function<int()>> routine(static_cast<std::function<int()>*>(argument));
        (*routine)();
        return nullptr;
    }

    /// Not pthread_timedjoin_np(): its limit is a time of the clock that the administrator may set.
    int timedJoin(int timeoutMs)
    {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
        int result = pthread_tryjoin_np(m_thread, nullptr);
        while (result == EBUSY && Clock::now() < deadline) {
            sleepMs(1);
            result = pthread_tryjoin_np(m_thread, nullptr);
        }
        return result;
    }

    const pid_t m_process = getpid(); // a forked child does not have its parent's threads
    pthread_t m_thread{};
    bool m_started = false;
    bool m_joined = false;
};

std::string absolutePath(const char* path)
{
    char resolved[PATH_MAX];
    return realpath(path, resolved) ? resolved : path;
}

std::string pathOfAddress(const void* address)
{
    Dl_info info{};
    return dladdr(address, &info) != 0 && info.dli_fname ? absolutePath(info.dli_fname) : std::string();
}

std::string pathOfModule(const char* moduleName)
{
    void* handle = dlopen(moduleName, RTLD_LAZY | RTLD_NOLOAD);
    if (!handle)
        return {};
    link_map* map = nullptr;
    const bool found = dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 && map;
    std::string path = found ? absolutePath(map->l_name) : std::string();
    dlclose(handle); // releases dlopen's reference
    return path;
}

bool fail(int error)
{
    errno = error;
    return false;
}

/// A lock belongs to an open file, and a forked child would share it. So the child closes its copies of the
/// files; the program it executes has none of them anyway.
class LinuxPrivateFile : public PrivateFile
{
public:
    explicit LinuxPrivateFile(QByteArray path) : m_path(std::move(path))
    {
        static const int isRegistered = pthread_atfork(&holdFiles, &releaseFiles, &closeFilesOfParent);
        static_cast<void>(isRegistered);
        const std::lock_guard<std::mutex> lock(filesMutex);
        m_next = firstFile;
        firstFile = this;
    }

    ~LinuxPrivateFile() override
    {
        const std::lock_guard<std::mutex> lock(filesMutex);
        LinuxPrivateFile** link = &firstFile;
        while (*link != this)
            link = &(*link)->m_next;
        *link = m_next;
        close();
    }

    bool open()
    {
        const std::lock_guard<std::mutex> lock(filesMutex); // a fork must find it open or not open
        constexpr int flags = O_RDWR | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
        m_descriptor = ::open(m_path.constData(), flags, S_IRUSR | S_IWUSR);
        struct stat info
        {
        };
        if (m_descriptor < 0 || fstat(m_descriptor, &info) != 0)
            return false;
        const bool isOwn = S_ISREG(info.st_mode) && info.st_uid == geteuid() && info.st_nlink == 1;
        return isOwn ? giveOwnerAccess(info.st_mode) : fail(EPERM);
    }

    bool lock() override { return flock(m_descriptor, LOCK_EX | LOCK_NB) == 0; }

    bool clear() override { return ftruncate(m_descriptor, 0) == 0; }

    bool append(const QByteArray& bytes) override
    {
        const qint64 before = size();
        if (!mayGrowTo(before + bytes.size()))
            return fail(EFBIG);
        for (int written = 0; written < bytes.size();) {
            const ssize_t result = write(m_descriptor, bytes.constData() + written,
                                         static_cast<std::size_t>(bytes.size() - written));
            if (result < 0 && errno != EINTR)
                return takeBack(before);
            written += result > 0 ? static_cast<int>(result) : 0;
        }
        return true;
    }

    qint64 size() const override
    {
        struct stat info
        {
        };
        return fstat(m_descriptor, &info) == 0 ? info.st_size : 0;
    }

    bool isInPlace() const override
    {
        struct stat own
        {
        };
        struct stat named
        {
        };
        const int second = ::open(m_path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
        const bool isFound = second >= 0 && fstat(second, &named) == 0 && fstat(m_descriptor, &own) == 0;
        if (second >= 0)
            ::close(second);
        return isFound && named.st_ino == own.st_ino && named.st_dev == own.st_dev;
    }

private:
    /// The host's file mode mask may have taken it away. Later programs need it, too.
    bool giveOwnerAccess(mode_t mode) const
    {
        constexpr mode_t access = S_IRUSR | S_IWUSR;
        return (mode & access) == access || fchmod(m_descriptor, mode | access) == 0;
    }

    /// A write beyond the process's limit would raise a signal.
    static bool mayGrowTo(qint64 size)
    {
        rlimit limit{};
        return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY ||
               static_cast<rlim_t>(size) <= limit.rlim_cur;
    }

    void close()
    {
        const int error = errno;
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        m_descriptor = -1;
        errno = error;
    }

    bool takeBack(qint64 size)
    {
        const int error = errno;
        static_cast<void>(ftruncate(m_descriptor, size) == 0);
        return fail(error);
    }

    static void holdFiles() { filesMutex.lock(); }
    static void releaseFiles() { filesMutex.unlock(); }
    static void closeFilesOfParent()
    {
        for (LinuxPrivateFile* file = firstFile; file; file = file->m_next)
            file->close();
        filesMutex.unlock();
    }

    static std::mutex filesMutex;
    static LinuxPrivateFile* firstFile;

    const QByteArray m_path;
    int m_descriptor = -1;
    LinuxPrivateFile* m_next = nullptr;
};

std::mutex LinuxPrivateFile::filesMutex;
LinuxPrivateFile* LinuxPrivateFile::firstFile = nullptr;

constexpr mode_t writableByOthers = S_IWGRP | S_IWOTH;

/// The user's own umask may let a group write in the parents. The check of the directory itself is strict.
bool isTrustedParent(const struct stat& info)
{
    const bool isOwn = info.st_uid == geteuid();
    const mode_t forbidden = isOwn ? S_IWOTH : writableByOthers;
    return (isOwn || info.st_uid == 0) && ((info.st_mode & forbidden) == 0 || (info.st_mode & S_ISVTX) != 0);
}

bool isPrivate(const struct stat& info)
{
    return (info.st_uid == geteuid() && (info.st_mode & writableByOthers) == 0) ||
           (isTrustedParent(info) && (info.st_mode & S_ISVTX) != 0);
}

bool makeTrusted(const QString& path, bool isParent, int linksLeft);

/// Gives the user all access, even if the host's file mode mask denies it. Another program may make the
/// directory at the same time.
bool makeOwnDirectory(const char* name)
{
    if (mkdir(name, S_IRWXU) == 0)
        return chmod(name, S_IRWXU) == 0;
    return errno == EEXIST;
}

/// One step of a path. A link is as good as its owner and its target.
bool makeTrustedStep(const QString& path, bool isParent, int linksLeft)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat info
    {
    };
    if (lstat(name.constData(), &info) != 0) {
        if (errno != ENOENT || !makeOwnDirectory(name.constData()) || lstat(name.constData(), &info) != 0)
            return false;
    }
    if (S_ISLNK(info.st_mode)) {
        char target[PATH_MAX];
        return (info.st_uid == 0 || info.st_uid == geteuid() || fail(EPERM)) &&
               (linksLeft > 0 || fail(ELOOP)) && realpath(name.constData(), target) &&
               makeTrusted(QFile::decodeName(target), isParent, linksLeft - 1);
    }
    if (!S_ISDIR(info.st_mode))
        return fail(ENOTDIR);
    return (isParent ? isTrustedParent(info) : isPrivate(info)) || fail(EPERM);
}

bool makeTrusted(const QString& path, bool isParent, int linksLeft)
{
    const QStringList names = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QString step;
    bool isTrusted = makeTrustedStep(QStringLiteral("/"), isParent || !names.isEmpty(), linksLeft);
    for (int i = 0; isTrusted && i < names.size(); ++i) {
        step += QLatin1Char('/') + names[i];
        isTrusted = makeTrustedStep(step, isParent || i < names.size() - 1, linksLeft);
    }
    return isTrusted;
}

} // namespace

std::unique_ptr<PrivateFile> PrivateFile::open(const QString& path)
{
    fillStandardDescriptors(); // the host may have closed them
    auto file = std::make_unique<LinuxPrivateFile>(QFile::encodeName(path));
    if (!file->open())
        return nullptr;
    return file;
}

bool makePrivateDirectory(const QString& path)
{
    constexpr int maxLinks = 8;
    return makeTrusted(QDir::cleanPath(path), false, maxLinks);
}

bool isSharedDirectory(const QString& path)
{
    struct stat info
    {
    };
    return stat(QFile::encodeName(path).constData(), &info) == 0 && (info.st_mode & S_ISVTX) != 0;
}

bool isSetUserId()
{
    return getauxval(AT_SECURE) != 0 || geteuid() != getuid() || getegid() != getgid();
}

QString environmentVariable(const char* name)
{
    return isSetUserId() ? QString() : QString::fromLocal8Bit(qgetenv(name));
}

QString userId()
{
    return QString::number(geteuid());
}

std::uint32_t processId()
{
    return static_cast<std::uint32_t>(getpid());
}

QString programPath()
{
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
    return length > 0 ? QFile::decodeName(QByteArray(path, static_cast<int>(length))) : QString();
}

std::unique_ptr<Thread> Thread::start(std::function<int()> routine)
{
    auto thread = std::make_unique<LinuxThread>();
    if (!thread->start(std::move(routine)))
        return nullptr;
    return thread;
}

ForkWatch::ForkWatch()
{
    ++forkWatches;
}

ForkWatch::~ForkWatch()
{
    --forkWatches;
}

bool isForkedChild()
{
    return forkedChild;
}

void closeInForkedChildren(std::intptr_t socket)
{
    connection = -1;
    connectionInode = inodeOfSocket(static_cast<int>(socket));
    connection = static_cast<int>(socket);
}

struct BlockedSignals::Mask
{
    sigset_t set;
};

BlockedSignals::BlockedSignals() : m_previous(std::make_unique<Mask>())
{
    sigset_t blocked;
    sigfillset(&blocked);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS})
        sigdelset(&blocked, fault);
    pthread_sigmask(SIG_BLOCK, &blocked, &m_previous->set);
}

BlockedSignals::~BlockedSignals()
{
    pthread_sigmask(SIG_SETMASK, &m_previous->set, nullptr);
}

DelayedCancellation::DelayedCancellation()
{
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_previous);
}

DelayedCancellation::~DelayedCancellation()
{
    pthread_setcancelstate(m_previous, nullptr);
}

bool qtServesHostLoop()
{
    return true;
}

void fillStandardDescriptors()
{
    int descriptor = 0;
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDWR | O_CLOEXEC); // the lowest free number
    if (descriptor >= 0)
        close(descriptor);
}

bool hasDescriptors(int count)
{
    std::vector<int> opened;
    opened.reserve(static_cast<std::size_t>(count));
    bool isOpen = true;
    while (isOpen && static_cast<int>(opened.size()) < count) {
        const int descriptor = eventfd(0, EFD_CLOEXEC);
        isOpen = descriptor >= 0;
        if (isOpen)
            opened.push_back(descriptor);
    }
    for (const int descriptor : opened)
        close(descriptor);
    return isOpen;
}

bool socketsRaiseSignals()
{
    return true;
}

std::int64_t sendQuietly(std::intptr_t socket, const char* data, std::size_t size)
{
    for (;;) {
        const ssize_t sent = send(static_cast<int>(socket), data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0)
            return sent;
        if (errno == EAGAIN || errno == ENOBUFS)
            return 0;
        if (errno != EINTR)
            return -1;
    }
}

bool waitUntilWritable(std::intptr_t socket, int timeoutMs)
{
    pollfd entry{static_cast<int>(socket), POLLOUT, 0};
    return poll(&entry, 1, timeoutMs) > 0;
}

std::uint32_t currentThreadId()
{
    return static_cast<std::uint32_t>(kernelThreadId());
}

void sleepMs(unsigned int ms)
{
    timespec left{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1000000};
    while (nanosleep(&left, &left) == -1 && errno == EINTR) {
    }
}

std::string moduleFilePath(const char* moduleName)
{
    return moduleName ? pathOfModule(moduleName) : pathOfAddress(reinterpret_cast<const void*>(&sleepMs));
}

void pinModule(const void* address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0 || !info.dli_fname)
        return;
    // The handle is never closed.
    dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace platform
