#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/util/captured_log.h"
#include "util/log.h"
#include "util/paths.h"
#include "util/text.h"

namespace orvane {
namespace {

using test::LogMessage;
using test::takeLog;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Unc, OnlyAHostOneSeparatorAndMoreTextIsAName) {
    struct Case {
        const char* path;
        bool unc;
        const char* message;  // none: silent
    };
    const Case cases[] = {
        {R"(\\srv\share)", true, nullptr},
        {R"(//srv/share)", true, nullptr},
        {R"(C:\x)", false, nullptr},
        {"", false, nullptr},
        {R"(\x)", false, nullptr},
        {R"(\\\x)", false, R"(don't understand path(\\\x))"},
        {R"(\\)", false, R"(don't understand path(\\))"},
        {R"(\)", false, R"(don't understand path(\))"},
        {R"(\\host)", false, R"(incomplete UNC path: host only(\\host))"},
        {R"(\\host\)", false, R"(incomplete UNC path: no path after host(\\host\))"},
        {R"(\\host\\x)", false, R"(invalid UNC path: too many slashes after host(\\host\\x))"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(utl_is_unc_intl(each.path, 1), each.unc) << each.path;
        if (each.message == nullptr) {
            EXPECT_THAT(takeLog(), IsEmpty()) << each.path;
        } else {
            EXPECT_THAT(takeLog(), ElementsAre(LogMessage{
                                       LOG_ERR, std::string("utl_is_unc_intl: ") + each.message}));
        }
    }
}

TEST(Paths, AbsoluteMeansADriveAndASeparatorOrAUncName) {
    for (const char* path :
         {R"(C:\)", R"(C:\x)", "C:/x", R"(\\srv\share\x)", R"(\\?\C:\x)", R"(\\?\UNC\srv\share)"}) {
        bool absolute = false;
        EXPECT_TRUE(utl_is_absolute_intl(path, absolute, 0));
        EXPECT_TRUE(absolute) << path;
    }
    for (const char* path :
         {"", "C:", "C:x", "x", R"(\x)", "C", R"(\\?\)", R"(\\?\C:)", R"(\\?\UNC\srv)", R"(x:)"}) {
        bool absolute = true;
        EXPECT_TRUE(utl_is_absolute_intl(path, absolute, 0));
        EXPECT_FALSE(absolute) << path;
    }
}

TEST(LongNames, WhatFollowsThePrefixIsPutIntoTheFormThatTheSystemTakes) {
    struct Case {
        const char* path;
        unsigned rootComponents;
        const char* result;
    };
    const Case cases[] = {
        {R"(C:\a\b)", 1, R"(C:\a\b)"},
        {R"(C:/a//b\/c)", 1, R"(C:\a\b\c)"},
        {R"(C:\a\)", 1, R"(C:\a\)"},
        {R"(C:\a\\)", 1, R"(C:\a\)"},
        {R"(C:\\)", 1, R"(C:\)"},
        {R"(C:\.\a\.\b\.)", 1, R"(C:\a\b)"},
        {R"(C:\a\..\b)", 1, R"(C:\b)"},
        {R"(C:\a\b\..)", 1, R"(C:\a)"},
        {R"(C:\a\b\..\)", 1, R"(C:\a\)"},
        {R"(C:\a\..)", 1, R"(C:\)"},
        {R"(C:\..\..\a)", 1, R"(C:\a)"},
        {R"(C:\..)", 1, R"(C:\)"},
        {R"(C:\.a\..b\c.\...)", 1, R"(C:\.a\..b\c.\...)"},
        {R"(/srv/share//x)", 2, R"(\srv\share\x)"},
        {R"(\srv\share\..\..\x)", 2, R"(\srv\share\x)"},
        {R"(\srv\share\a\..)", 2, R"(\srv\share\)"},
        {R"(\srv\share)", 2, R"(\srv\share)"},
        {"", 1, ""},
    };
    for (const Case& each : cases) {
        const OwnedWide name = utl_utf8_to_wide_intl(each.path, 0);
        normalizeLongName(name.get(), each.rootComponents);
        EXPECT_STREQ(utl_wide_to_utf8_nolog(name.get()).get(), each.result) << each.path;
        normalizeLongName(name.get(), each.rootComponents);
        EXPECT_STREQ(utl_wide_to_utf8_nolog(name.get()).get(), each.result) << "once is enough";
    }
}

}  // namespace
}  // namespace orvane
