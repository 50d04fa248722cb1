#include "util/files/paths.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/captured_log.h"
#include "util/text/text.h"

namespace orvane {
namespace {

test::CapturedLog s_log;

std::vector<std::string> takeLog() { return s_log.lines(); }

TEST(Unc, OnlyAHostOneSeparatorAndMoreTextIsAName) {
    const struct {
        const char* path;
        bool unc;
        const char* message;  // empty: silent
    } cases[] = {
        {R"(\\srv\share)", true, ""},
        {R"(//srv/share)", true, ""},
        {R"(C:\x)", false, ""},
        {"", false, ""},
        {R"(\x)", false, ""},
        {R"(\\\x)", false, R"(don't understand path(\\\x))"},
        {R"(\\)", false, R"(don't understand path(\\))"},
        {R"(\)", false, R"(don't understand path(\))"},
        {R"(\\host)", false, R"(incomplete UNC path: host only(\\host))"},
        {R"(\\host\)", false, R"(incomplete UNC path: no path after host(\\host\))"},
        {R"(\\host\\x)", false, R"(invalid UNC path: too many slashes after host(\\host\\x))"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(utl_is_unc_intl(each.path, 1), each.unc) << each.path;
        std::vector<std::string> expected;
        if (*each.message != '\0')
            expected.push_back(std::string("<3> utl_is_unc_intl: ") + each.message);
        EXPECT_EQ(takeLog(), expected) << each.path;
    }
}

TEST(Paths, AbsoluteMeansADriveAndASeparatorOrAUncName) {
    const auto isAbsolute = [](const char* path) {
        bool absolute = false;
        EXPECT_TRUE(utl_is_absolute_intl(path, absolute, 0));
        return absolute;
    };
    for (const char* path :
         {R"(C:\)", R"(C:\x)", "C:/x", R"(\\srv\share\x)", R"(\\?\C:\x)", R"(\\?\UNC\srv\share)"})
        EXPECT_TRUE(isAbsolute(path)) << path;
    for (const char* path :
         {"", "C:", "C:x", "x", R"(\x)", "C", R"(\\?\)", R"(\\?\C:)", R"(\\?\UNC\srv)"})
        EXPECT_FALSE(isAbsolute(path)) << path;
}

TEST(LongNames, WhatFollowsThePrefixIsPutIntoTheFormThatTheSystemTakes) {
    const struct {
        const char* path;
        unsigned rootComponents;
        const char* result;
    } cases[] = {
        {R"(C:/a//b\/c)", 1, R"(C:\a\b\c)"},
        {R"(C:\a\\)", 1, R"(C:\a\)"},
        {R"(C:\\)", 1, R"(C:\)"},
        {R"(C:\.\a\.\b\.)", 1, R"(C:\a\b)"},
        {R"(C:\a\b\..\)", 1, R"(C:\a\)"},
        {R"(C:\a\..)", 1, R"(C:\)"},
        {R"(C:\..\..\a)", 1, R"(C:\a)"},
        {R"(C:\..)", 1, R"(C:\)"},
        {R"(C:\.a\..b\c.\...)", 1, R"(C:\.a\..b\c.\...)"},
        {R"(/srv/share//x)", 2, R"(\srv\share\x)"},
        {R"(\srv\share\..\..\x)", 2, R"(\srv\share\x)"},
        {R"(\srv\share\a\..)", 2, R"(\srv\share\)"},
        {"", 1, ""},
    };
    for (const auto& each : cases) {
        const OwnedWide name = utl_utf8_to_wide_intl(each.path, 0);
        normalizeLongName(name.get(), each.rootComponents);
        EXPECT_STREQ(utl_wide_to_utf8_nolog(name.get()).get(), each.result) << each.path;
    }
}

}  // namespace
}  // namespace orvane
