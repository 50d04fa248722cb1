#include "util/registry/registry.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/handles.h"
#include "tests/support/captured_log.h"
#include "util/log/log.h"

namespace orvane {
namespace {

using testing::IsEmpty;
using testing::StartsWith;

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

    // The value that is written and read back.
    std::string readBack(DWORD type, const Bytes& data) {
        set(L"v", type, data);
        const OwnedText text = utl_reg_get_value(HKEY_CURRENT_USER, kKey, "v", 0);
        return text ? text.get() : "(none)";
    }

    UniqueRegKey m_key;
    test::CapturedLog m_log;
};

TEST_F(Registry, EveryTypeAndLengthReadsAsText) {
    using namespace std::string_view_literals;
    ASSERT_NE(SetEnvironmentVariableW(L"ORVANE_TEST", L"é"), 0);
    const std::wstring large(30'000, L'x');
    const struct {
        DWORD type;
        Bytes data;
        std::string text;
    } cases[] = {
        {REG_SZ, bytesOf(L"C:\\é日本\0"sv), "C:\\é日本"},
        {REG_SZ, bytesOf(L"a\0b\0"sv), "a"},
        {REG_SZ, {}, ""},
        {REG_SZ, {'a'}, "(none)"},
        {REG_SZ, bytesOf(L"\xDE00\0"sv), "(none)"},
        {REG_LINK, bytesOf(L"\\x\0"sv), "\\x"},
        {REG_LINK, {'a', 0, 'b'}, "(none)"},
        {REG_DWORD, {0xD2, 0x04, 0, 0}, "1234"},
        {REG_DWORD, {0xFF, 0xFF, 0xFF, 0xFF}, "-1"},
        {REG_DWORD_BIG_ENDIAN, {0, 0, 0x04, 0xD2}, "1234"},
        {REG_QWORD, {0, 0, 0, 0, 1, 0, 0, 0}, "4294967296"},
        {REG_QWORD, {0, 0, 0, 0, 0, 0, 0, 0x80}, "-9223372036854775808"},
        // Cut short: the number that the bytes there make. Too long: the rest is not looked at.
        {REG_DWORD, {0xD2, 0x04}, "1234"},
        {REG_DWORD_BIG_ENDIAN, {0x04, 0xD2}, "1234"},
        {REG_QWORD, {0, 0, 0, 0, 1}, "4294967296"},
        {REG_DWORD, {1, 0, 0, 0, 9, 9}, "1"},
        {REG_BINARY, {0x0A, 0xFF}, "0AFF"},
        {REG_BINARY, {}, ""},
        {REG_NONE, {0x00}, "00"},
        {REG_MULTI_SZ, bytesOf(L"a\0b\0c\0\0"sv), "a,b,c"},
        {REG_MULTI_SZ, bytesOf(L"a\0b"sv), "a,b"},
        {REG_MULTI_SZ, bytesOf(L"a\0b\0"sv), "a,b"},
        {REG_MULTI_SZ, bytesOf(L"a\0\0c\0\0"sv), "a"},
        {REG_MULTI_SZ, bytesOf(L"\0\0"sv), ""},
        {REG_MULTI_SZ, bytesOf(L"\0b\0\0"sv), ""},
        {REG_MULTI_SZ, {'a', 0, 'b'}, "(none)"},
        {REG_EXPAND_SZ, bytesOf(L"%ORVANE_TEST%\\x\0"sv), "é\\x"},
        {REG_EXPAND_SZ, bytesOf(L"%ORVANE_TEST%\\x"sv), "é\\x"},
        {REG_EXPAND_SZ, {'a', 0, 'b'}, "ab"},
        {REG_EXPAND_SZ, {'a'}, "a"},
        {REG_EXPAND_SZ, bytesOf(L"%NO_SUCH_THING%\0"sv), "%NO_SUCH_THING%"},
        {REG_EXPAND_SZ, bytesOf(large), std::string(30'000, 'x')},
        {REG_RESOURCE_LIST, {1, 2}, "(none)"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(readBack(each.type, each.data), each.text) << &each - cases;
    EXPECT_THAT(m_log.lines(), IsEmpty());

    std::wstring many;
    for (int i = 0; i < 50'000; ++i) many += L"x\0"sv;
    EXPECT_EQ(readBack(REG_MULTI_SZ, bytesOf(many)).size(), 99'999U);
    EXPECT_EQ(readBack(REG_BINARY, Bytes(100'000, 0xA5)).size(), 200'000U);
}

TEST_F(Registry, AMissingKeyOrValueIsAnErrorUnlessTheCallerExpectsIt) {
    RegistryUtil registry(1);
    EXPECT_EQ(registry.GetValue("v", nullptr), nullptr) << "no key is open";
    ASSERT_TRUE(registry.OpenKey(HKEY_CURRENT_USER, kKey, kRead, nullptr));
    const std::string failed = std::string("RegistryUtil::GetValue: RegQueryValueExW(HKCU\\") +
                               kKey + "\\none) for size failed (2) -- <2>";
    bool notFound = false;
    EXPECT_EQ(registry.GetValue("none", &notFound), nullptr);
    EXPECT_TRUE(notFound);
    EXPECT_EQ(m_log.lines().back(), "<6> " + failed);
    EXPECT_EQ(registry.GetValue("none", nullptr), nullptr);
    EXPECT_EQ(m_log.lines().back(), "<3> " + failed);

    notFound = false;
    EXPECT_FALSE(registry.OpenKey(HKEY_LOCAL_MACHINE, "Software\\None\\x", kRead, &notFound));
    EXPECT_TRUE(notFound);
    EXPECT_FALSE(registry.IsOpen()) << "the key that was open before is closed";
    EXPECT_THAT(m_log.lines().back(), StartsWith("<6> "));
    EXPECT_TRUE(registry.OpenKey(HKEY_LOCAL_MACHINE, nullptr, kRead, nullptr));
    EXPECT_STREQ(registry.GetKeyString(), "HKLM");
    const auto unknown = reinterpret_cast<HKEY>(std::uintptr_t{0x1234});
    EXPECT_FALSE(registry.OpenKey(unknown, "x", kRead, &notFound));
    EXPECT_FALSE(notFound);
}

TEST_F(Registry, OneCallReadsAValueAndKeepsTheReasonWhenItCannot) {
    using namespace std::string_view_literals;
    set(L"größe", REG_SZ, bytesOf(L"42\0"sv));
    EXPECT_STREQ(utl_reg_get_value(HKEY_CURRENT_USER, kKey, "größe", 0).get(), "42");
    // Closing the key and logging come after the failure; neither may hide it.
    setLogWriter([](int, const char*, va_list) { SetLastError(ERROR_SUCCESS); });
    for (const char* key : {kKey, "Software\\None"}) {
        for (const int log : {0, 1}) {
            SetLastError(ERROR_SUCCESS);
            EXPECT_EQ(utl_reg_get_value(HKEY_CURRENT_USER, key, "none", log), nullptr);
            EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND}) << key << log;
        }
    }
}

// Between asking for the size and for the data the value may change: then there is no text, never
// part of one or something from beyond it.
TEST_F(Registry, AValueThatChangesWhileItIsReadIsReadWholeOrNotAtAll) {
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

// The error of a failed read must not be hidden by the close of its key.
TEST(Handle, TheLastErrorSurvivesItsClose) {
    UniqueHandle handle(reinterpret_cast<HANDLE>(std::uintptr_t{0x7FFF'FFF0}));  // closing fails
    SetLastError(ERROR_FILE_NOT_FOUND);
    handle.reset();
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

}  // namespace
}  // namespace orvane
