#include "common/link/pipe_trust.h"

#include <aclapi.h>

#include <array>
#include <cstddef>
#include <cwchar>
#include <optional>
#include <vector>

#include "platform/handles.h"

namespace orvane {
namespace {

bool isElevatedOwner(PSID owner) {
    return IsWellKnownSid(owner, WinBuiltinAdministratorsSid) ||
           IsWellKnownSid(owner, WinLocalSystemSid);
}

// What a pipe says of who made it; the pointers are null where the system does not tell.
class Maker {
public:
    explicit Maker(HANDLE pipe) {
        if (GetSecurityInfo(pipe, SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &m_owner, nullptr,
                            nullptr, nullptr, m_ownerMemory.put()) != ERROR_SUCCESS)
            m_owner = nullptr;
        PACL label = nullptr;
        if (GetSecurityInfo(pipe, SE_KERNEL_OBJECT, LABEL_SECURITY_INFORMATION, nullptr, nullptr,
                            nullptr, &label, m_labelMemory.put()) == ERROR_SUCCESS)
            m_level = levelOfPipe(label, m_owner);
    }
    [[nodiscard]] PSID owner() const { return m_owner; }
    [[nodiscard]] std::optional<DWORD> level() const { return m_level; }

private:
    UniqueLocalMemory m_ownerMemory, m_labelMemory;
    PSID m_owner = nullptr;
    std::optional<DWORD> m_level;
};

std::optional<DWORD> levelOfOwnPipe() {
    // Nobody else's: a second instance would have the label of the first.
    LARGE_INTEGER number{};
    QueryPerformanceCounter(&number);
    std::array<wchar_t, 64> name{};
    std::swprintf(name.data(), name.size(), L"\\\\.\\pipe\\OrVaneLevel-%lx-%llx",
                  GetCurrentProcessId(), static_cast<unsigned long long>(number.QuadPart));
    const UniqueFile own(
        CreateNamedPipeW(name.data(), PIPE_ACCESS_INBOUND | FILE_FLAG_FIRST_PIPE_INSTANCE,
                         PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, 0, 0, 0, nullptr));
    return own ? Maker(own.get()).level() : std::nullopt;
}

bool isOfThisUser(PSID owner) {
    UniqueHandle token;
    OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put());
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<std::byte> user(size);
    if (!GetTokenInformation(token.get(), TokenUser, user.data(), size, &size))
        return isTrustedOwner(owner, nullptr);
    return isTrustedOwner(owner, reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
}

}  // namespace

bool isTrustedOwner(PSID owner, PSID thisUser) {
    return (thisUser != nullptr && EqualSid(owner, thisUser)) || isElevatedOwner(owner);
}

DWORD levelOfPipe(const ACL* label, PSID owner) {
    for (DWORD i = 0; label != nullptr && i < label->AceCount; ++i) {
        void* entry = nullptr;
        // The list is only read, whatever the declaration says.
        if (!GetAce(const_cast<ACL*>(label), i, &entry)) continue;
        auto* const ace = static_cast<SYSTEM_MANDATORY_LABEL_ACE*>(entry);
        if (ace->Header.AceType == SYSTEM_MANDATORY_LABEL_ACE_TYPE) {
            PSID const sid = &ace->SidStart;
            return *GetSidSubAuthority(sid, *GetSidSubAuthorityCount(sid) - 1U);
        }
    }
    return owner != nullptr && isElevatedOwner(owner) ? SECURITY_MANDATORY_HIGH_RID
                                                      : SECURITY_MANDATORY_MEDIUM_RID;
}

const char* whyNotTrusted(HANDLE pipe) {
    const Maker maker(pipe);
    if (maker.owner() != nullptr && !isOfThisUser(maker.owner()))
        return "it belongs to another user";
    const auto ours = levelOfOwnPipe();
    if (!ours) return nullptr;
    if (!maker.level()) return "its integrity level cannot be read";
    return *maker.level() < *ours ? "its integrity level is lower" : nullptr;
}

}  // namespace orvane
