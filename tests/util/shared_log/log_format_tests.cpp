#include "util/shared_log/log_format.h"

#include <gtest/gtest.h>

#include <string>

namespace orvane {
namespace {

std::string translated(const char* format, std::string_view errnoText,
                       std::string_view windowsText) {
    const OwnedText result =
        replaceErrorDirectives(format, countErrorDirectives(format), errnoText, windowsText);
    return result ? result.get() : "(none)";
}

TEST(LogFormat, ReplacesErrorDirectivesAndLeavesEveryOtherAlone) {
    EXPECT_EQ(translated("%s(%d) -- %M", "e", "Access denied."), "%s(%d) -- Access denied.");
    EXPECT_EQ(translated("%m%M%m", "e", "W"), "eWe");
    // An escaped percent is literal, also before the letters; a cut directive stays as it is.
    EXPECT_EQ(translated("100%%m %%%M %", "e", "W"), "100%%m %%W %");
    // A text is not searched for directives again.
    EXPECT_EQ(translated("%m", "%%M", "W"), "%%M");
}

}  // namespace
}  // namespace orvane
