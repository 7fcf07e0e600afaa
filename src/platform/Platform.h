// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_PLATFORM_PLATFORM_H
#define VIGIL_PLATFORM_PLATFORM_H

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

/// The interface to the operating system. Each system has one source file, chosen by the build. All functions
/// may be called from any thread; none throws.
namespace platform {

/// Runs one routine in a thread of its own.
///
/// Purpose: like std::thread, but with hasEnded() and a time-out for join(). At the end of a process, and in
/// a forked child, the system may have ended the thread; std::thread::join() would never return.
///
/// Threads: the object belongs to its creator's thread.
/// Ownership: the destructor detaches the thread; it neither ends it nor waits for it.
class Thread
{
public:
    /// Null if the system has no thread left.
    static std::unique_ptr<Thread> start(std::function<int()> routine);

    virtual ~Thread() = default;

    /// True once the thread is gone, for any reason.
    virtual bool hasEnded() const = 0;

    /// False in a forked child.
    virtual bool isOfThisProcess() const = 0;

    /// True on the thread itself.
    virtual bool isCurrent() const = 0;

    /// Waits for the end of the thread, at most timeoutMs milliseconds; negative means no limit. False on
    /// time-out.
    virtual bool join(int timeoutMs) = 0;
};

/// While one lives, every child of this process is marked as a forked child. The library has one while it
/// runs, and each thread has one while it starts or stops the library.
class ForkWatch
{
public:
    ForkWatch();
    ~ForkWatch();
    ForkWatch(const ForkWatch&) = delete;
    ForkWatch& operator=(const ForkWatch&) = delete;
};

/// True in a child forked during a ForkWatch. It has none of the library's threads, and the locks that other
/// threads held are never released. Stays true for the life of the child.
bool isForkedChild();

/// Every child forked from now on closes its copy of this socket. A child that lives on would otherwise keep
/// the connection open after the end of this process. There is one such socket at a time; -1 means none.
void closeInForkedChildren(std::intptr_t socket);

/// While it lives, the calling thread blocks all signals except those of its own faults. Threads inherit the
/// mask of their creator: hold one while creating a thread of the library, because the signals of the process
/// belong to the host. Windows has no such signals.
class BlockedSignals
{
public:
    BlockedSignals();
    ~BlockedSignals();
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    struct Mask;
    const std::unique_ptr<Mask> m_previous;
};

/// While it lives, a request of the host to cancel the calling thread waits. Cancellation unwinds the thread
/// out of a system call; code that lets no exception pass, such as Qt's, would end the process. Hold one
/// around everything that may make system calls on a thread of the host. Windows cancels no thread.
class DelayedCancellation
{
public:
    DelayedCancellation();
    ~DelayedCancellation();
    DelayedCancellation(const DelayedCancellation&) = delete;
    DelayedCancellation& operator=(const DelayedCancellation&) = delete;

private:
    int m_previous = 0;
};

/// Opens the null device for each of the three standard descriptors that the host has closed. Otherwise a
/// descriptor of the library, such as its connection, would get the number, and with it the host's output.
/// Programs the host starts do not inherit them.
void fillStandardDescriptors();

/// True if the process may open this many more descriptors. Qt ends a process that has none left for the
/// event loop of a new thread.
bool hasDescriptors(int count);

/// True if a write to a socket without a peer raises a signal. Then sockets are written with sendQuietly().
bool socketsRaiseSignals();

/// Sends on a socket without raising a signal and without waiting. Returns the number of bytes sent, 0 if the
/// system takes none at the moment, -1 if the connection is lost.
std::int64_t sendQuietly(std::intptr_t socket, const char* data, std::size_t size);

/// Waits until the system takes more bytes or the connection is lost. False on time-out.
bool waitUntilWritable(std::intptr_t socket, int timeoutMs);

/// True if Qt's event dispatcher for the thread of an application object serves the host's main loop, too:
/// GLib's default context.
bool qtServesHostLoop();

/// A file of this user's own, for appending.
///
/// Threads: one at a time.
/// Ownership: the destructor closes the file and releases its lock. Child processes inherit neither.
/// Failure: qt_error_string() has the reason.
class PrivateFile
{
public:
    /// Opens the file, or creates it for this user alone. Null if the name leads to a link, or to a file of
    /// another user.
    static std::unique_ptr<PrivateFile> open(const QString& path);

    virtual ~PrivateFile() = default;

    /// Keeps other programs from locking the file. False if one of them has locked it.
    virtual bool lock() = 0;

    /// Removes the content.
    virtual bool clear() = 0;

    /// Appends all bytes or, if the disk is full, none.
    virtual bool append(const QByteArray& bytes) = 0;

    virtual qint64 size() const = 0;

    /// Opens the file a second time by its name, and closes it. False if the name no longer leads to this
    /// file.
    virtual bool isInPlace() const = 0;
};

/// Creates the directory, with its parents, for this user alone. False if another user owns it or may write
/// in it, or may replace one of its parents. A directory with the sticky bit may be shared: no user can
/// replace the entries of another there. On Windows the access rights of the volume decide instead.
bool makePrivateDirectory(const QString& path);

/// True if users share the directory: a sticky one.
bool isSharedDirectory(const QString& path);

/// True if the process has more rights than the user who started it, and must not trust its environment.
bool isSetUserId();

/// The value of an environment variable. Null if it is unset, or if the process must not trust it.
QString environmentVariable(const char* name);

/// Distinguishes the effective user from others of the host, in file names.
QString userId();

std::uint32_t processId();

/// The full path of the running program.
QString programPath();

/// The system's id of the calling thread.
std::uint32_t currentThreadId();

/// Suspends the calling thread.
void sleepMs(unsigned int ms);

/// The full path of a loaded module in the system's 8-bit encoding. Null means this library. Empty if the
/// module is not loaded.
std::string moduleFilePath(const char* moduleName);

/// Keeps the module at this address loaded until the end of the process.
void pinModule(const void* address);

} // namespace platform

#endif
