#include "velmo/runtime/VPAsyncTask.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "velmo/foundation/Utf8.h"
#include "velmo/runtime/VPLogging.h"

extern char** environ;

namespace velmo {

struct detail::VPAsyncTaskState {
    mutable std::mutex mutex;
    std::weak_ptr<VPAsyncTaskProtocol> delegate;
    VPAsyncTask::TextCallback onData;
    VPAsyncTask::TextCallback onError;
    VPAsyncTask::EndCallback onEnd;
};

namespace {

using State = detail::VPAsyncTaskState;

class UniqueFd {
public:
    explicit UniqueFd(int fd = -1) : fd_(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~UniqueFd() { reset(); }
    int get() const { return fd_; }
    int release() { return std::exchange(fd_, -1); }
    void reset(int fd = -1) {
        if (fd_ >= 0) ::close(fd_);
        fd_ = fd;
    }

private:
    int fd_;
};

[[noreturn]] void throwErrno(int code, const std::string& what) {
    throw std::system_error(code, std::generic_category(), what);
}

struct Pipe {
    UniqueFd read;
    UniqueFd write;
};

Pipe makePipe() {
    int fds[2];
    // Close-on-exec, so programs started at the same time elsewhere don't hold our ends open.
    if (::pipe2(fds, O_CLOEXEC) != 0) throwErrno(errno, "cannot create a pipe");
    return Pipe{UniqueFd(fds[0]), UniqueFd(fds[1])};
}

class FileActions {
public:
    FileActions() {
        if (const int rc = ::posix_spawn_file_actions_init(&actions_); rc != 0)
            throwErrno(rc, "cannot spawn");
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    void dup2(int fd, int target) {
        if (const int rc = ::posix_spawn_file_actions_adddup2(&actions_, fd, target); rc != 0) {
            throwErrno(rc, "cannot spawn");
        }
    }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    posix_spawn_file_actions_t actions_;
};

// The callbacks may be set while a run reports from its thread.
template <class T>
T load(const State& state, T State::*field) {
    std::lock_guard lock(state.mutex);
    return state.*field;
}

template <class T>
void store(State& state, T State::*field, T value) {
    std::lock_guard lock(state.mutex);
    state.*field = std::move(value);
}

enum class Stream { Output, Error };

// Reports run on a detached thread, where anything escaping would end the host: a report that
// throws is logged as the guard logs, and the run goes on.
template <class Call> void deliver(const char* function, int line, Call&& call) noexcept {
    try {
        call();
    } catch (...) {
        VPLogging::logCaughtException(function, line);
    }
}

void report(const State& state, Stream stream, const std::string& chunk) {
    if (chunk.empty() || !Utf8::isValid(chunk)) return;
    std::shared_ptr<VPAsyncTaskProtocol> delegate;
    VPAsyncTask::TextCallback callback;
    {
        std::lock_guard lock(state.mutex);
        delegate = state.delegate.lock();
        callback = stream == Stream::Output ? state.onData : state.onError;
    }
    if (delegate) {
        deliver(__PRETTY_FUNCTION__, __LINE__, [&] {
            if (stream == Stream::Output) {
                delegate->onData(chunk);
            } else {
                delegate->onError(chunk);
            }
        });
    }
    if (callback) deliver(__PRETTY_FUNCTION__, __LINE__, [&] { callback(chunk); });
}

void reportEnd(const State& state) {
    std::shared_ptr<VPAsyncTaskProtocol> delegate;
    VPAsyncTask::EndCallback callback;
    {
        std::lock_guard lock(state.mutex);
        delegate = state.delegate.lock();
        callback = state.onEnd;
    }
    if (delegate) deliver(__PRETTY_FUNCTION__, __LINE__, [&] { delegate->onEnd(); });
    if (callback) deliver(__PRETTY_FUNCTION__, __LINE__, [&] { callback(); });
}

// Reads both streams until each ends, reaps the process, then reports the end.
void watch(const std::shared_ptr<State>& state, pid_t pid, UniqueFd output, UniqueFd error) {
    std::array<UniqueFd, 2> fds{std::move(output), std::move(error)};
    std::array<char, 65536> buffer;
    while (fds[0].get() >= 0 || fds[1].get() >= 0) {
        std::array<pollfd, 2> polled{pollfd{fds[0].get(), POLLIN, 0}, pollfd{fds[1].get(), POLLIN, 0}};
        if (::poll(polled.data(), polled.size(), -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        for (std::size_t i = 0; i < fds.size(); ++i) {
            if (fds[i].get() < 0 || polled[i].revents == 0) continue;
            const ssize_t n = ::read(fds[i].get(), buffer.data(), buffer.size());
            if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
            if (n <= 0) {
                fds[i].reset();
                continue;
            }
            report(*state, i == 0 ? Stream::Output : Stream::Error,
                   std::string(buffer.data(), std::size_t(n)));
        }
    }
    fds[0].reset();
    fds[1].reset();
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    reportEnd(*state);
}

} // namespace

VPAsyncTask::VPAsyncTask() : state_(std::make_shared<detail::VPAsyncTaskState>()) {}
VPAsyncTask::~VPAsyncTask() = default;

std::shared_ptr<VPAsyncTaskProtocol> VPAsyncTask::delegate() const {
    return load(*state_, &State::delegate).lock();
}

void VPAsyncTask::setDelegate(const std::shared_ptr<VPAsyncTaskProtocol>& delegate) {
    store(*state_, &State::delegate, std::weak_ptr<VPAsyncTaskProtocol>(delegate));
}

VPAsyncTask::TextCallback VPAsyncTask::onData() const { return load(*state_, &State::onData); }
void VPAsyncTask::setOnData(TextCallback onData) { store(*state_, &State::onData, std::move(onData)); }
VPAsyncTask::TextCallback VPAsyncTask::onError() const { return load(*state_, &State::onError); }
void VPAsyncTask::setOnError(TextCallback onError) { store(*state_, &State::onError, std::move(onError)); }
VPAsyncTask::EndCallback VPAsyncTask::onEnd() const { return load(*state_, &State::onEnd); }
void VPAsyncTask::setOnEnd(EndCallback onEnd) { store(*state_, &State::onEnd, std::move(onEnd)); }

void VPAsyncTask::execute(const std::string& path, const std::vector<std::string>& arguments) {
    Pipe output = makePipe();
    Pipe error = makePipe();
    // An empty standard input: a program that waits for input must not wait on the host's terminal.
    UniqueFd input(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (input.get() < 0) throwErrno(errno, "cannot open /dev/null");

    FileActions actions;
    actions.dup2(input.get(), STDIN_FILENO);
    actions.dup2(output.write.get(), STDOUT_FILENO);
    actions.dup2(error.write.get(), STDERR_FILENO);

    std::vector<char*> argv;
    argv.reserve(arguments.size() + 2);
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const auto& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    pid_t pid = 0;
    // posix_spawn reports a failed exec (a missing or non-executable program) through its result.
    if (const int rc = ::posix_spawn(&pid, path.c_str(), actions.get(), nullptr, argv.data(), environ);
        rc != 0) {
        throwErrno(rc, "cannot launch " + path);
    }
    // Only the child writes: with our write ends closed, a read gives end-of-stream when it exits.
    output.write.reset();
    error.write.reset();
    try {
        std::thread(watch, state_, pid, std::move(output.read), std::move(error.read)).detach();
    } catch (...) {
        // The caller hears of a failure to launch, so nothing of the run may go on: nobody would
        // read its output or reap it.
        ::kill(pid, SIGKILL);
        while (::waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
        }
        throw;
    }
}

} // namespace velmo
