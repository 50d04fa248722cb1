#include "common/link/pipe_server.h"

#include <aclapi.h>

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/handles.h"

namespace orvane {
namespace {

// What GetTokenInformation answers; empty when it fails.
std::vector<std::byte> ask(HANDLE token, TOKEN_INFORMATION_CLASS what) {
    DWORD size = 0;
    GetTokenInformation(token, what, nullptr, 0, &size);
    std::vector<std::byte> answer(size);
    if (!GetTokenInformation(token, what, answer.data(), size, &size)) answer.clear();
    return answer;
}

UniqueHandle tokenOf(HANDLE process) {
    UniqueHandle token;
    OpenProcessToken(process, TOKEN_QUERY, token.put());
    return token;
}

// A mandatory level's relative id: the higher, the more may be done. None when it is not told.
std::optional<DWORD> integrityOf(HANDLE token) {
    const auto answer = ask(token, TokenIntegrityLevel);
    if (answer.empty()) return std::nullopt;
    PSID const level = reinterpret_cast<const TOKEN_MANDATORY_LABEL*>(answer.data())->Label.Sid;
    return *GetSidSubAuthority(level, *GetSidSubAuthorityCount(level) - 1U);
}

bool isOwnedByStranger(HANDLE pipe, HANDLE thisToken) {
    PSID owner = nullptr;
    UniqueLocalMemory descriptor;
    if (GetSecurityInfo(pipe, SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                        nullptr, nullptr, descriptor.put()) != ERROR_SUCCESS ||
        owner == nullptr)
        return false;
    const auto user = ask(thisToken, TokenUser);
    return !isTrustedOwner(
        owner, user.empty() ? nullptr : reinterpret_cast<const TOKEN_USER*>(user.data())->User.Sid);
}

bool isServedFromBelow(HANDLE pipe, HANDLE thisToken) {
    ULONG id = 0;
    if (!GetNamedPipeServerProcessId(pipe, &id)) return false;
    const UniqueHandle server(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
    if (!server) return false;
    const auto theirs = integrityOf(tokenOf(server.get()).get());
    const auto ours = integrityOf(thisToken);
    return theirs && ours && *theirs < *ours;
}

}  // namespace

bool isTrustedOwner(PSID owner, PSID thisUser) {
    return (thisUser != nullptr && EqualSid(owner, thisUser)) ||
           IsWellKnownSid(owner, WinBuiltinAdministratorsSid) ||
           IsWellKnownSid(owner, WinLocalSystemSid);
}

const char* whyNotTrusted(HANDLE pipe) {
    const UniqueHandle token = tokenOf(GetCurrentProcess());
    if (isOwnedByStranger(pipe, token.get())) return "it belongs to another user";
    if (isServedFromBelow(pipe, token.get())) return "its server has a lower integrity level";
    return nullptr;
}

}  // namespace orvane
