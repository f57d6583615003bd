// The initialisation of function-local statics, as it is linked into what we ship.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>
#include <vector>

#include "src/base/Handles.h"

TEST(LocalStatics, OneOfManyThreadsInitialisesAndTheOthersWait) {
    static std::atomic<int> initialisations = 0;
    static const KernelHandle entered(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    static const KernelHandle mayEnd(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto value = [] {
        static const int number = [] {
            ++initialisations;
            SetEvent(entered.Get());
            WaitForSingleObject(mayEnd.Get(), INFINITE);
            return 42;
        }();
        return number;
    };
    std::vector<std::future<int>> values;
    for (int thread = 0; thread < 8; ++thread) values.push_back(std::async(std::launch::async, value));
    EXPECT_EQ(WaitForSingleObject(entered.Get(), 5000), WAIT_OBJECT_0);
    for (const auto& each : values)
        EXPECT_EQ(each.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    SetEvent(mayEnd.Get());
    for (auto& each : values) EXPECT_EQ(each.get(), 42);
    EXPECT_EQ(initialisations, 1);
}

TEST(LocalStatics, InitialisationThatThrowsIsTriedAgain) {
    int tries = 0;
    const auto value = [&] {
        static const int number = ++tries < 3 ? throw std::runtime_error("not yet") : 7;
        return number;
    };
    EXPECT_THROW(value(), std::runtime_error);
    EXPECT_THROW(value(), std::runtime_error);
    EXPECT_EQ(value(), 7);
    EXPECT_EQ(value(), 7);
    EXPECT_EQ(tries, 3);
}

TEST(LocalStatics, StaticMayBeInitialisedByAnother) {
    const auto inner = [] {
        static const int number = 3;
        static const std::vector<int> numbers(static_cast<size_t>(number), 1);
        return numbers.size();
    };
    const auto outer = [&] {
        static const std::vector<int> numbers(inner() + 1, 1);
        return numbers.size();
    };
    EXPECT_EQ(outer(), 4U);
}
