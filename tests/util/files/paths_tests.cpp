#include "util/files/paths.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/captured_log.h"
#include "util/text/text.h"

namespace orvane {
namespace {

TEST(Unc, OnlyAHostOneSeparatorAndMoreTextIsAName) {
    enum Kind { name, other, wrong };  // wrong: a text that starts like a name is reported
    const std::pair<const char*, Kind> cases[] = {
        {R"(\\srv\share)", name}, {"//srv/share", name}, {R"(C:\x)", other},      {"", other},
        {R"(\x)", other},         {R"(\\\x)", wrong},    {R"(\\)", wrong},        {R"(\)", wrong},
        {R"(\\host)", wrong},     {R"(\\host\)", wrong}, {R"(\\host\\x)", wrong},
    };
    test::CapturedLog log;
    for (const auto& [path, kind] : cases) {
        EXPECT_EQ(utl_is_unc_intl(path, 1), kind == name) << path;
        EXPECT_EQ(log.lines().size(), kind == wrong ? 1U : 0U) << path;
        EXPECT_EQ(utl_is_unc_intl(path, 0), kind == name) << path;
        EXPECT_TRUE(log.lines().empty()) << path;
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

TEST(LongNames, ThePathAfterThePrefixIsNormalized) {
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
