#include <gtest/gtest.h>

#include <stdexcept>

#include "velmo/archive/ReadAhead.h"

using namespace velmo;

namespace {

/// Makes input i as i copies of the letter 'a' + i, and throws on the inputs it is told to.
class Letters : public ReadAhead::Producer {
public:
    explicit Letters(std::size_t throwsOn) : throwsOn_(throwsOn) {}

    void produce(ReadAhead& ahead, std::size_t index) override {
        if (index == throwsOn_) throw std::runtime_error("broken input");
        const std::string bytes(index, static_cast<char>('a' + index));
        if (!bytes.empty() && !ahead.publish(index, bytes.data(), bytes.size())) return;
        ahead.finish(index, false);
    }

private:
    std::size_t throwsOn_;
};

std::string readAll(ReadAhead& ahead, std::size_t index, std::int64_t& end) {
    std::string bytes;
    char buffer[3];
    while ((end = ahead.read(index, buffer, sizeof buffer)) > 0)
        bytes.append(buffer, static_cast<std::size_t>(end));
    return bytes;
}

} // namespace

// A producer that throws fails its input and no other; one that can't be made fails every input;
// neither leaves the reader waiting.
TEST(ReadAhead, AProducerThatThrowsFailsItsInputsWithoutAHang) {
    struct Case {
        std::string name;
        bool factoryThrows;
        unsigned threads;
    };
    for (const Case& c :
         {Case{"one worker", false, 1}, Case{"three workers", false, 3}, Case{"no producer", true, 2}}) {
        ReadAhead ahead(
            6, c.threads,
            [&]() -> std::unique_ptr<ReadAhead::Producer> {
                if (c.factoryThrows) throw std::bad_alloc();
                return std::make_unique<Letters>(2);
            },
            4);
        for (std::size_t i = 0; i < 6; ++i) {
            std::int64_t end = 0;
            const std::string bytes = readAll(ahead, i, end);
            const bool fails = c.factoryThrows || i == 2;
            EXPECT_EQ(end, fails ? -1 : 0) << c.name << ", input " << i;
            EXPECT_EQ(bytes, fails ? "" : std::string(i, static_cast<char>('a' + i)))
                << c.name << ", input " << i;
        }
    }
}
