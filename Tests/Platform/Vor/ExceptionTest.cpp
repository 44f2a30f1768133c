#include "Vor/Exception.h"

#include "Vor/Logging.h"

#include <stdexcept>

#include <gtest/gtest.h>

using Vor::Exception;

TEST(ExceptionTest, CarriesPlaceStatusAndFormattedText) {
    const Exception e(12, "path/file.cpp", yERROR_NOT_FOUND, "Find", "No %s at %2$d", "box", 7);
    EXPECT_EQ(e.Line(), 12);
    EXPECT_STREQ(e.Path(), "path/file.cpp");
    EXPECT_EQ(e.Status(), -999);
    EXPECT_STREQ(e.Function(), "Find");
    EXPECT_TRUE(e.HasText());
    EXPECT_STREQ(e.what(), "No box at 7");
}

TEST(ExceptionTest, WithoutTextItSaysSoAndHasAnEmptyOne) {
    const Exception e(1, "file.cpp", yERROR_STATE, "Start");
    EXPECT_FALSE(e.HasText());
    EXPECT_STREQ(e.what(), "");
    EXPECT_TRUE(Exception(1, "file.cpp", yERROR_STATE, "Start", "").HasText());
}

TEST(ExceptionTest, TheStatusOfAForeignOneIsTheGenericFailure) {
    EXPECT_EQ(Exception::StatusOf(Exception(1, "file.cpp", yERROR_STATE, "Start")), yERROR_STATE);
    EXPECT_EQ(Exception::StatusOf(std::runtime_error("broken")), yERROR);
}

TEST(ExceptionTest, TextWithStrayPerCentSignsServesAsFormat) {
    const Exception e(1, "file.cpp", yERROR, "Start", "100% of %s at 5%");
    EXPECT_STREQ(e.what(), "100% of %s at 5%");
}

TEST(ExceptionTest, ThrowFillsInThePlaceOfTheCall) {
    const int line = __LINE__ + 2;
    try {
        Vor::Throw(yERROR_BUSY, "Busy with %d", 3);
    } catch (const Exception& e) {
        EXPECT_EQ(e.Line(), line);
        EXPECT_NE(std::string(e.Path()).find("ExceptionTest.cpp"), std::string::npos);
        EXPECT_NE(std::string(e.Function()), "");
        EXPECT_EQ(e.Status(), -976);
        EXPECT_STREQ(e.what(), "Busy with 3");
    }
}

TEST(ExceptionTest, ThrowWithoutTextIsTextless) {
    try {
        Vor::Throw(yERROR_FULL);
    } catch (const Exception& e) {
        EXPECT_FALSE(e.HasText());
        EXPECT_EQ(e.Status(), -977);
    }
}

TEST(ExceptionTest, ThrowIfFailedThrowsAnythingButOk) {
    EXPECT_NO_THROW(Vor::ThrowIfFailed(yOK));
    EXPECT_THROW(Vor::ThrowIfFailed(yERROR), Exception);
    EXPECT_THROW(Vor::ThrowIfFailed(2), Exception);
}

TEST(ExceptionTest, ThrowNestedKeepsTheCaughtOneInside) {
    try {
        try {
            throw std::out_of_range("too far");
        } catch (...) {
            Vor::ThrowNested(yERROR_FORMAT, "Outer %s", "text");
        }
    } catch (const Exception& e) {
        EXPECT_EQ(e.Status(), -984);
        EXPECT_STREQ(e.what(), "Outer text");
        EXPECT_THROW(std::rethrow_if_nested(e), std::out_of_range);
    }
}

TEST(ExceptionTest, IsCaughtAsStandardException) {
    EXPECT_THROW(Vor::Throw(yERROR), std::exception);
}

TEST(ExceptionTest, CopiesShareWhatTheyHold) {
    static_assert(std::is_nothrow_copy_constructible_v<Exception>);
    const Exception e(1, "file.cpp", yERROR, "Start", "text");
    const Exception copy = e; // NOLINT(performance-unnecessary-copy-initialization): the copy is what is tested
    EXPECT_EQ(copy.what(), e.what());
}

namespace {

void ThrowThreeDeep() {
    try {
        try {
            throw 5;
        } catch (...) {
            std::throw_with_nested(std::runtime_error("middle"));
        }
    } catch (...) {
        Vor::ThrowNested(yERROR_STATE, "outermost");
    }
}

} // namespace

TEST(ExceptionTest, LogExceptionLogsTheWholeChainOutermostFirst) {
    try {
        ThrowThreeDeep();
    } catch (const std::exception& e) {
        const Vor::LogCapture log;
        Exception::LogException(e);
        const auto records = log.Records();
        ASSERT_EQ(records.size(), 3U);
        EXPECT_EQ(records[0].level, Vor::LevelError);
        EXPECT_EQ(records[0].text, "Caught exception with status -1000: outermost");
        EXPECT_NE(records[1].text.find("middle"), std::string::npos);
        EXPECT_EQ(records[2].text, "Caused by exception of another type");
    }
}

TEST(ExceptionTest, LogExceptionNamesTheTypeOfAForeignOne) {
    const Vor::LogCapture log;
    Exception::LogException(std::runtime_error("broken"));
    ASSERT_EQ(log.Records().size(), 1U);
    EXPECT_EQ(log.Records()[0].text, "Caught std::runtime_error: broken");
}

TEST(ExceptionTest, LogBackTraceListsTheCallsOfEachExceptionOfTheChain) {
    try {
        try {
            Vor::Throw(yERROR_BUSY);
        } catch (...) {
            Vor::ThrowNested(yERROR_STATE);
        }
    } catch (const std::exception& e) {
        const Vor::LogCapture log;
        Exception::LogBackTrace(e);
        const auto records = log.Records();
        ASSERT_EQ(records.size(), 2U);
        EXPECT_EQ(records[0].text.find("Back trace of status -1000:\n  #0 "), 0U);
        EXPECT_EQ(records[1].text.find("Back trace of status -976:\n  #0 "), 0U);
        EXPECT_EQ(records[1].level, Vor::LevelError);
    }
}

TEST(ExceptionTest, LogBackTraceOfAForeignExceptionLogsNothing) {
    const Vor::LogCapture log;
    Exception::LogBackTrace(std::runtime_error("broken"));
    EXPECT_TRUE(log.Records().empty());
}
