// What the exception barrier makes of what is thrown.
#include "src/base/Barrier.h"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(Barrier, AnswersWhatTheBodyAnswers) {
    EXPECT_EQ(Barrier([] { return S_FALSE; }), S_FALSE);
    EXPECT_EQ(Barrier([]() -> HRESULT { return DISP_E_MEMBERNOTFOUND; }), DISP_E_MEMBERNOTFOUND);
}

TEST(Barrier, FailedAllocationBecomesOutOfMemory) {
    EXPECT_EQ(Barrier([]() -> HRESULT { throw std::bad_alloc(); }), E_OUTOFMEMORY);
}

TEST(Barrier, AnythingElseThrownBecomesUnexpected) {
    EXPECT_EQ(Barrier([]() -> HRESULT { throw std::out_of_range("no such key"); }), E_UNEXPECTED);
    EXPECT_EQ(Barrier([]() -> HRESULT { throw 7; }), E_UNEXPECTED);
}
