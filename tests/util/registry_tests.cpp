#include "util/registry.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "platform/handles.h"
#include "tests/util/captured_log.h"
#include "util/log.h"
#include "util/registry_value.h"

namespace orvane {
namespace {

using test::LogMessage;
using test::takeLog;
using testing::Contains;
using testing::IsEmpty;

constexpr const char* kKey = R"(Software\OrVaneMediaUtilTests é日本)";
constexpr const wchar_t* kWideKey = L"Software\\OrVaneMediaUtilTests \u00E9\u65E5\u672C";
constexpr REGSAM kRead = KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS;
using Bytes = std::vector<unsigned char>;

Bytes bytesOf(std::wstring_view text) {
    const auto* const first = reinterpret_cast<const unsigned char*>(text.data());
    return {first, first + text.size() * sizeof(wchar_t)};
}

class Registry : public testing::Test {
protected:
    Registry() {
        EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, kWideKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                  nullptr, m_key.put(), nullptr),
                  ERROR_SUCCESS);
        takeLog();
    }
    ~Registry() override {
        m_key.reset();
        RegDeleteKeyW(HKEY_CURRENT_USER, kWideKey);
    }

    void set(const wchar_t* name, DWORD type, const Bytes& data) {
        ASSERT_EQ(RegSetValueExW(m_key.get(), name, 0, type, data.data(),
                                 static_cast<DWORD>(data.size())),
                  ERROR_SUCCESS);
    }

    // The value that is written and read back; what reading it logs can be taken afterwards.
    std::string readBack(DWORD type, const Bytes& data) {
        set(L"v", type, data);
        RegistryUtil registry(1);
        EXPECT_TRUE(registry.OpenKey(HKEY_CURRENT_USER, kKey, kRead, nullptr));
        takeLog();
        const OwnedText text = registry.GetValue("v", nullptr);
        return text ? text.get() : "(none)";
    }

    UniqueRegKey m_key;
};

TEST_F(Registry, EveryTypeReadsAsText) {
    using namespace std::string_view_literals;
    EXPECT_EQ(readBack(REG_SZ, bytesOf(L"C:\\é日本\0"sv)), "C:\\é日本");
    EXPECT_EQ(readBack(REG_SZ, bytesOf(L"a\0b\0"sv)), "a");
    EXPECT_EQ(readBack(REG_SZ, {}), "");
    EXPECT_EQ(readBack(REG_LINK, bytesOf(L"\\x\0"sv)), "\\x");
    EXPECT_EQ(readBack(REG_SZ, bytesOf(L"\xDE00\0"sv)), "(none)");

    EXPECT_EQ(readBack(REG_DWORD, {0xD2, 0x04, 0, 0}), "1234");
    EXPECT_EQ(readBack(REG_DWORD, {0xFF, 0xFF, 0xFF, 0xFF}), "-1");
    EXPECT_EQ(readBack(REG_DWORD_BIG_ENDIAN, {0, 0, 0x04, 0xD2}), "1234");
    EXPECT_EQ(readBack(REG_QWORD, {0, 0, 0, 0, 1, 0, 0, 0}), "4294967296");
    EXPECT_EQ(readBack(REG_QWORD, {0, 0, 0, 0, 0, 0, 0, 0x80}), "-9223372036854775808");
    // Cut short: the number that the bytes there make. Too long: the rest is not looked at.
    EXPECT_EQ(readBack(REG_DWORD, {0xD2, 0x04}), "1234");
    EXPECT_EQ(readBack(REG_DWORD_BIG_ENDIAN, {0x04, 0xD2}), "1234");
    EXPECT_EQ(readBack(REG_QWORD, {0, 0, 0, 0, 1}), "4294967296");
    EXPECT_EQ(readBack(REG_QWORD, {0xFF}), "255");
    EXPECT_EQ(readBack(REG_DWORD, {1, 0, 0, 0, 9, 9}), "1");

    EXPECT_EQ(readBack(REG_BINARY, {0x0A, 0xFF}), "0AFF");
    EXPECT_EQ(readBack(REG_NONE, {0x00}), "00");
    EXPECT_EQ(readBack(REG_BINARY, {}), "");
    EXPECT_EQ(readBack(REG_BINARY, Bytes(100000, 0xA5)).size(), 200000U);

    EXPECT_EQ(readBack(REG_RESOURCE_LIST, {1, 2}), "(none)");
    EXPECT_THAT(takeLog(), Contains(LogMessage{
                               LOG_ERR, "RegistryUtil::ValueToUTF8: unsupported data type 8"}));
}

TEST_F(Registry, AListIsJoinedUpToItsFirstEmptyString) {
    using namespace std::string_view_literals;
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"a\0b\0c\0\0"sv)), "a,b,c");
    EXPECT_THAT(
        takeLog(),
        Contains(LogMessage{LOG_DEBUG,
                            "RegistryUtil::MultiSzToUTF8: replacing NUL with , at character 3"}));
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"a\0b"sv)), "a,b");
    EXPECT_THAT(takeLog(), Contains(testing::Field(&LogMessage::priority, LOG_NOTICE)));
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"a\0b\0"sv)), "a,b");
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"a\0\0c\0\0"sv)), "a");
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"\0\0"sv)), "");
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"\0b\0\0"sv)), "");
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"a,b\0c\0\0"sv)), "a,b,c");
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(L"one"sv)), "one");
    EXPECT_EQ(readBack(REG_MULTI_SZ, {'a', 0, 'b'}), "(none)");

    std::wstring many;
    for (int i = 0; i < 50000; ++i) many += L"x"sv, many += L'\0';
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(many)).size(), 99999U);
}

TEST_F(Registry, StringsThatAreCutShortAreReadAsFarAsTheyGo) {
    using namespace std::string_view_literals;
    EXPECT_EQ(readBack(REG_SZ, bytesOf(L"ab"sv)), "ab");
    EXPECT_THAT(takeLog(), Contains(LogMessage{
                               LOG_NOTICE, std::string("RegistryUtil::SzToUTF8: handling REG_SZ "
                                                       "value HKCU\\") +
                                               kKey + "\\v without NUL terminator"}));
    EXPECT_EQ(readBack(REG_SZ, {'a', 0, 'b', 0, 'c'}), "(none)");
    EXPECT_THAT(takeLog(),
                Contains(LogMessage{LOG_ERR, std::string("RegistryUtil::SzToUTF8: REG_SZ value "
                                                         "\"HKCU\\") +
                                                 kKey +
                                                 "\\v\" has an odd number of bytes (5), can not "
                                                 "be a valid wchar_t string"}));

    ASSERT_NE(SetEnvironmentVariableW(L"ORVANE_TEST", L"é"), 0);
    EXPECT_EQ(readBack(REG_EXPAND_SZ, bytesOf(L"%ORVANE_TEST%\\x\0"sv)), "é\\x");
    EXPECT_EQ(readBack(REG_EXPAND_SZ, bytesOf(L"%ORVANE_TEST%\\x"sv)), "é\\x");
    Bytes odd = bytesOf(L"%ORVANE_TEST%\\x\0"sv);
    odd.pop_back();
    EXPECT_EQ(readBack(REG_EXPAND_SZ, odd), "é\\x");
    EXPECT_EQ(readBack(REG_EXPAND_SZ, {'a', 0, 'b'}), "ab");
    EXPECT_EQ(readBack(REG_EXPAND_SZ, {'a'}), "a");
    EXPECT_EQ(readBack(REG_EXPAND_SZ, bytesOf(L"%NO_SUCH_THING%\0"sv)), "%NO_SUCH_THING%");
    std::wstring large(30000, L'x');
    EXPECT_EQ(readBack(REG_EXPAND_SZ, bytesOf(large)), std::string(30000, 'x'));
}

TEST_F(Registry, AbsenceIsAnErrorOnlyToThoseWhoDidNotAsk) {
    RegistryUtil registry(1);
    EXPECT_EQ(registry.GetValue("v", nullptr), nullptr);
    EXPECT_THAT(takeLog(),
                Contains(LogMessage{LOG_ERR, "RegistryUtil::GetValue: no registry key open"}));
    EXPECT_STREQ(registry.GetKeyString(), "");

    ASSERT_TRUE(registry.OpenKey(HKEY_CURRENT_USER, kKey, kRead, nullptr));
    EXPECT_EQ(registry.GetKeyString(), std::string("HKCU\\") + kKey);
    takeLog();
    const std::string failed = std::string("RegistryUtil::GetValue: RegQueryValueExW(HKCU\\") +
                               kKey + "\\none) for size failed (2) -- <2>";
    bool notFound = false;
    EXPECT_EQ(registry.GetValue("none", &notFound), nullptr);
    EXPECT_TRUE(notFound);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(takeLog().back(), (LogMessage{LOG_INFO, failed}));
    EXPECT_EQ(registry.GetValue("none", nullptr), nullptr);
    EXPECT_EQ(takeLog().back(), (LogMessage{LOG_ERR, failed}));

    notFound = false;
    EXPECT_FALSE(registry.OpenKey(HKEY_LOCAL_MACHINE, "Software\\None\\x", kRead, &notFound));
    EXPECT_TRUE(notFound);
    EXPECT_FALSE(registry.IsOpen()) << "the key that was open before is closed";
    EXPECT_EQ(takeLog().back(),
              (LogMessage{LOG_INFO,
                          "RegistryUtil::DoOpenKey: RegOpenKeyExW(HKLM\\Software\\None\\x) failed "
                          "(2) -- <2>"}));

    EXPECT_TRUE(registry.OpenKey(HKEY_LOCAL_MACHINE, nullptr, kRead, nullptr));
    EXPECT_STREQ(registry.GetKeyString(), "HKLM");
    EXPECT_TRUE(registry.Close());
    EXPECT_TRUE(registry.Close());
    takeLog();
    EXPECT_FALSE(
        registry.OpenKey(reinterpret_cast<HKEY>(std::uintptr_t{0x1234}), "x", kRead, nullptr));
    EXPECT_THAT(takeLog(), Contains(LogMessage{LOG_ERR,
                                               "RegistryUtil::KeyToString: unknown registry key: "
                                               "0x00001234"}));
}

TEST_F(Registry, OneCallReadsAValueAndKeepsTheReasonWhenItCannot) {
    using namespace std::string_view_literals;
    set(L"größe", REG_SZ, bytesOf(L"42\0"sv));
    EXPECT_STREQ(utl_reg_get_value(HKEY_CURRENT_USER, kKey, "größe", 0).get(), "42");
    EXPECT_EQ(utl_reg_get_value(HKEY_CURRENT_USER, kKey, "none", 0), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(utl_reg_get_value(HKEY_CURRENT_USER, "Software\\None", "v", 0), nullptr);
    EXPECT_THAT(takeLog(), IsEmpty());
}

// Between asking for the size and for the data the value may change: then there is no text, never
// part of one or something from beyond it.
TEST_F(Registry, AValueThatChangesMeanwhileIsReadWholeOrNotAtAll) {
    const std::wstring small(10, L's');
    const std::wstring large(2000, L'l');
    set(L"v", REG_SZ, bytesOf(small));
    std::atomic<bool> stop{false};
    std::thread changer([&] {
        while (!stop) {
            set(L"v", REG_SZ, bytesOf(large));
            set(L"v", REG_SZ, bytesOf(small));
        }
    });
    for (int i = 0; i < 500; ++i) {
        const OwnedText text = utl_reg_get_value(HKEY_CURRENT_USER, kKey, "v", 0);
        if (!text) continue;
        const std::string read = text.get();
        EXPECT_TRUE(read == std::string(10, 's') || read == std::string(2000, 'l')) << read;
    }
    stop = true;
    changer.join();
}

}  // namespace
}  // namespace orvane
