#include "tools/platform/Report.h"
#include "tools/parallel/Workers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using lbxtool::inOrder;
// What a task left behind: the tests of commands call a run of the tool Outcome.
using TaskOutcome = lbxtool::Outcome;

namespace {

constexpr std::size_t TASKS = 40;
const unsigned int JOBS[] = {1, 2, 4, 16, 0};

// Early tasks take longest, so that with several workers they finish last.
void slowerWhenEarlier(std::size_t i)
{
    std::this_thread::sleep_for(std::chrono::microseconds(50 * (TASKS - i)));
}

std::string failureText(const TaskOutcome& outcome)
{
    try {
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
    } catch (const std::exception& e) {
        return e.what();
    }
    return "";
}

} // namespace

TEST(Workers, DeliverInTaskOrderWhatEachTaskComputedWhateverTheNumberOfWorkers)
{
    for (const unsigned int jobs : JOBS) {
        std::vector<std::size_t> computed(TASKS), delivered;
        std::vector<std::string> failures;
        inOrder(
            jobs, TASKS,
            [&](std::size_t i) {
                slowerWhenEarlier(i);
                computed[i] = i * i;
                if (i % 7 == 3)
                    throw std::runtime_error("task " + std::to_string(i));
            },
            [&](std::size_t i, const TaskOutcome& outcome) {
                delivered.push_back(computed[i]);
                failures.push_back(failureText(outcome));
            });
        ASSERT_EQ(delivered.size(), TASKS) << jobs;
        for (std::size_t i = 0; i < TASKS; ++i) {
            EXPECT_EQ(delivered[i], i * i) << jobs;
            EXPECT_EQ(failures[i], i % 7 == 3 ? "task " + std::to_string(i) : "") << jobs;
        }
    }
}

TEST(Workers, TheCallingThreadDeliversEverythingAndIsOneOfTheWorkers)
{
    for (const unsigned int jobs : {1u, 3u}) {
        std::vector<std::thread::id> computers(TASKS), deliverers(TASKS);
        inOrder(
            jobs, TASKS,
            [&](std::size_t i) {
                slowerWhenEarlier(i);
                computers[i] = std::this_thread::get_id();
            },
            [&](std::size_t i, const TaskOutcome&) { deliverers[i] = std::this_thread::get_id(); });
        std::set<std::thread::id> threads(computers.begin(), computers.end());
        EXPECT_LE(threads.size(), jobs);
        for (std::size_t i = 0; i < TASKS; ++i) {
            EXPECT_EQ(deliverers[i], std::this_thread::get_id());
            if (jobs == 1) {
                EXPECT_EQ(computers[i], std::this_thread::get_id()) << i;
            }
        }
    }
    EXPECT_GE(lbxtool::workerCount(0), 1u);
    EXPECT_EQ(lbxtool::workerCount(5), 5u);
}

// Tasks are taken in the order given, and a task may wait for one before it
// in both orders, as the entries of an archive wait for its opening, which
// is taken early. A failed delivery stops the run, which then ends.
TEST(Workers, AFailedDeliveryStopsTheRunAndNoLaterOneIsMade)
{
    constexpr std::size_t GROUP = 8;
    std::vector<std::size_t> order;
    for (std::size_t lead = 0; lead < TASKS; lead += GROUP) {
        if (lead == 0)
            order.push_back(lead);
        if (lead + GROUP < TASKS)
            order.push_back(lead + GROUP);
        for (std::size_t i = lead + 1; i < lead + GROUP; ++i)
            order.push_back(i);
    }
    for (int round = 0; round < 20; ++round) {
        for (const unsigned int jobs : JOBS) {
            std::vector<std::atomic<bool>> done(TASKS);
            std::vector<std::size_t> delivered;
            const auto run = [&] {
                inOrder(
                    jobs, TASKS,
                    [&](std::size_t i) {
                        while (!done[i - i % GROUP] && i % GROUP != 0)
                            std::this_thread::yield();
                        done[i] = true;
                    },
                    [&](std::size_t i, const TaskOutcome&) {
                        delivered.push_back(i);
                        if (i == GROUP + 2)
                            throw std::runtime_error("stop");
                    },
                    order);
            };
            EXPECT_THROW(run(), std::runtime_error);
            ASSERT_EQ(delivered.size(), GROUP + 3) << jobs;
            EXPECT_EQ(delivered.back(), GROUP + 2) << jobs;
        }
    }
}

// When delivering is the slow part, the workers wait for it instead of
// computing everything at once and holding it all.
TEST(Workers, StayNoMoreTasksAheadOfTheDeliveriesThanTheirLead)
{
    for (const std::size_t lead : {std::size_t{1}, lbxtool::LEAD_PER_WORKER}) {
        for (const unsigned int jobs : {2u, 4u}) {
            std::atomic<std::size_t> computed{0}, delivered{0}, mostAhead{0};
            inOrder(
                jobs, TASKS,
                [&](std::size_t) {
                    const std::size_t ahead = ++computed - delivered;
                    std::size_t most = mostAhead;
                    while (ahead > most && !mostAhead.compare_exchange_weak(most, ahead)) {
                    }
                },
                [&](std::size_t, const TaskOutcome&) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                    ++delivered;
                },
                {}, lead);
            EXPECT_GT(mostAhead, 1u) << jobs << " jobs, lead " << lead;
            EXPECT_LE(mostAhead, lead * jobs) << jobs << " jobs, lead " << lead;
        }
    }
}

// Warnings are said once a run of the tool, so each round has its own.
TEST(Workers, WarningsAndErrorsOfTasksComeOutInTaskOrderAndEachWarningOnce)
{
    for (const unsigned int jobs : JOBS) {
        const std::string round = " (workers test, " + std::to_string(jobs) + " jobs)";
        std::string expected;
        for (std::size_t i = 0; i < TASKS; ++i) {
            if (i == 2)
                expected += "lbx: warning: every task" + round + "\n";
            if (i % 2 == 0)
                expected += "lbx: warning: task " + std::to_string(i) + round + "\n";
            expected += "lbx: failed " + std::to_string(i) + "\n";
        }
        testing::internal::CaptureStderr();
        inOrder(
            jobs, TASKS,
            [&](std::size_t i) {
                slowerWhenEarlier(i);
                if (i >= 2)
                    lbxtool::warn("every task" + round);
                if (i % 2 == 0)
                    lbxtool::warn("task " + std::to_string(i) + round);
            },
            [&](std::size_t i, const TaskOutcome& outcome) {
                outcome.said.say();
                lbxtool::reportError("failed " + std::to_string(i));
            });
        EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
    }
}
