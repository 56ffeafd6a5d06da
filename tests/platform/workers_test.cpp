#include "platform/workers.h"

#include <gtest/gtest.h>
#include <stdexcept>

#include "support/recording_host.h"

namespace photrak {
namespace {

// Many short loops of changing length: a thread that is late for one must neither be missed nor do
// a task of the next.
TEST(Workers, DoEveryTaskOnceInEveryLoop) {
    for (const int threads : {1, 2, 5}) {
        Workers workers(threads);
        EXPECT_LE(workers.Count(), threads);
        std::vector<std::atomic<bool>> busy(static_cast<std::size_t>(threads));
        for (long loop = 0; loop < 300; ++loop) {
            std::vector<std::atomic<int>> done(static_cast<std::size_t>(loop % 17));
            workers.Share(loop % 17, [&](long task, int worker) {
                std::atomic<bool>& mine = busy[static_cast<std::size_t>(worker)];
                EXPECT_FALSE(mine.exchange(true));
                ++done[static_cast<std::size_t>(task)];
                mine = false;
            });
            for (const auto& times : done) ASSERT_EQ(times, 1) << threads << " " << loop;
        }
    }
}

TEST(Workers, ThrowOnWhatATaskThrew) {
    Workers workers(3);
    const auto fail = [](long task, int) {
        if (task == 4) throw std::runtime_error("task 4");
    };
    EXPECT_THROW(workers.Share(6, fail), std::runtime_error);
    int count = 0;
    workers.Share(1, [&](long, int) { ++count; });
    EXPECT_EQ(count, 1);
}

TEST(Workers, TakeTheirNumberFromTheEnvironment) {
    RecordingHost host;
    const int processors = ThreadBudget();
    EXPECT_GE(processors, 1);
    const struct {
        const char* text;
        int threads;  // 0: as without
    } rows[] = {{"3", 3}, {"256", 256}, {"257", 0}, {"0", 0}, {"-2", 0}, {"2x", 0}, {"", 0}};
    for (const auto& row : rows) {
        host.environment["PHOTRAK_THREADS"] = row.text;
        EXPECT_EQ(ThreadBudget(), row.threads ? row.threads : processors) << row.text;
    }
}

}  // namespace
}  // namespace photrak
