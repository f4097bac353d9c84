#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "velmo/foundation/Files.h"
#include "velmo/runtime/VPAsyncTask.h"

namespace velmo {
namespace {

// What a run reported, in order; waits for the end.
struct Recorder {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> events;
    std::string output;
    std::string error;
    bool ended = false;

    void attach(VPAsyncTask& task) {
        task.setOnData([this](const std::string& s) { add("data", s, output); });
        task.setOnError([this](const std::string& s) { add("error", s, error); });
        task.setOnEnd([this] {
            std::lock_guard lock(mutex);
            events.push_back("end");
            ended = true;
            changed.notify_all();
        });
    }
    void add(const char* kind, const std::string& chunk, std::string& into) {
        std::lock_guard lock(mutex);
        events.push_back(kind);
        into += chunk;
    }
    // A bound against a hang, not a measure of speed.
    bool waitForEnd() {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(60), [this] { return ended; });
    }
    std::size_t count(const std::string& kind) {
        std::lock_guard lock(mutex);
        return std::size_t(std::count(events.begin(), events.end(), kind));
    }
};

TEST(VPAsyncTask, ReportsWhatTheProgramWritesThenTheEnd) {
    struct Case {
        const char* name;
        const char* script;
        std::string output;
        std::string error;
    };
    const Case cases[] = {
        {"silent", "exit 3", "", ""},
        {"multi-byte text", "printf 'h\\303\\251llo w\\303\\266rld \\342\\234\\223\\n'",
         "h\u00e9llo w\u00f6rld \u2713\n", ""},
        {"both streams", "echo out; echo err >&2", "out\n", "err\n"},
        {"input is empty", "cat", "", ""},
        {"undecodable bytes dropped", "printf '\\377\\376'", "", ""},
        // The shell exits first; its background child still holds the pipes.
        {"streams outlive the process", "(sleep 0.3; echo late; echo late-err >&2) & exit 0", "late\n",
         "late-err\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        VPAsyncTask task;
        Recorder recorder;
        recorder.attach(task);
        task.execute("/bin/sh", {"-c", c.script});
        ASSERT_TRUE(recorder.waitForEnd());
        EXPECT_EQ(recorder.output, c.output);
        EXPECT_EQ(recorder.error, c.error);
        EXPECT_EQ(recorder.count("end"), 1u);
        EXPECT_EQ(recorder.events.back(), "end");
        if (c.output.empty()) {
            EXPECT_EQ(recorder.count("data"), 0u);
        }
    }
}

class Delegate : public VPAsyncTaskProtocol {
public:
    explicit Delegate(Recorder& recorder) : recorder_(recorder) {}
    void onData(const std::string& data) override { recorder_.add("delegate-data", data, text_); }
    void onEnd() override { recorder_.add("delegate-end", "", text_); }

private:
    Recorder& recorder_;
    std::string text_;
};

TEST(VPAsyncTask, TheDelegateHearsFirstAndIsHeldWeakly) {
    Recorder recorder;
    {
        VPAsyncTask task;
        auto delegate = std::make_shared<Delegate>(recorder);
        task.setDelegate(delegate);
        recorder.attach(task);
        task.execute("/bin/echo", {"hi"});
        ASSERT_TRUE(recorder.waitForEnd());
        // The task may go before its run ends; the run reports to the end regardless.
    }
    EXPECT_EQ(recorder.events, (std::vector<std::string>{"delegate-data", "data", "delegate-end", "end"}));

    Recorder second;
    VPAsyncTask task;
    task.setDelegate(std::make_shared<Delegate>(second)); // nobody else keeps it
    EXPECT_EQ(task.delegate(), nullptr);
    second.attach(task);
    task.execute("/bin/echo", {"hi"});
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_EQ(second.events, (std::vector<std::string>{"data", "end"}));
}

// Throws from every report it hears.
class ThrowingDelegate : public VPAsyncTaskProtocol {
public:
    void onData(const std::string&) override { throw std::runtime_error("delegate data"); }
    void onEnd() override { throw 42; }
};

TEST(VPAsyncTask, AReportThatThrowsEndsNeitherTheHostNorTheRun) {
    VPAsyncTask task;
    const auto delegate = std::make_shared<ThrowingDelegate>();
    task.setDelegate(delegate);
    Recorder recorder;
    recorder.attach(task);
    task.setOnData([&](const std::string& s) {
        recorder.add("data", s, recorder.output);
        throw std::runtime_error("callback data");
    });
    task.execute("/bin/sh", {"-c", "echo one; sleep 0.2; echo two"});
    ASSERT_TRUE(recorder.waitForEnd());
    EXPECT_EQ(recorder.output, "one\ntwo\n");
}

TEST(VPAsyncTask, ALaunchFailureReachesTheCaller) {
    const auto folder = Files::makeTemporaryDirectory("velmo-task");
    const auto notExecutable = folder / "script.sh";
    ASSERT_TRUE(Files::writeAtomically(notExecutable, "#!/bin/sh\necho no\n", 0644));
    const std::string paths[] = {(folder / "missing").string(), notExecutable.string()};
    for (const auto& path : paths) {
        SCOPED_TRACE(path);
        VPAsyncTask task;
        Recorder recorder;
        recorder.attach(task);
        EXPECT_THROW(task.execute(path, {}), std::system_error);
        EXPECT_TRUE(recorder.events.empty());
    }
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace velmo
