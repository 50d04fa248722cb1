#pragma once

// One run of the probe: the player's objects, and the copies that are in its library meanwhile.

#include <functional>
#include <optional>

#include "platform/atl/atlcomcli.h"
#include "probe/probe.h"

namespace orvane::probe {

class Session {
public:
    explicit Session(const Subject& subject);
    // Stops playing, and takes out of the library what is left of the copies.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    const Subject& subject;
    CComPtr<IWMPMediaCollection> library;
    CComPtr<IWMPControls> controls;
    CComPtr<IWMPSettings> settings;
    // A copy with two artists, and one that is named as a film; null when the library takes none.
    CComPtr<IWMPMedia3> track;
    CComPtr<IWMPMedia3> film;

    [[nodiscard]] std::filesystem::path trackPath() const;
    [[nodiscard]] std::filesystem::path filmPath() const;

    // The library's items of that path; null when it cannot be searched.
    [[nodiscard]] CComPtr<IWMPPlaylist> itemsOf(const std::wstring& path) const;
    // A new object for the item that `track` stands for; null when it is not found.
    [[nodiscard]] CComPtr<IWMPMedia3> trackAgain() const;
    // False for a path that is not in the library.
    [[nodiscard]] bool remove(const std::filesystem::path& path) const;

    // Dispatches messages until it holds, or for so long.
    [[nodiscard]] static bool wait(const std::function<bool()>& holds, DWORD milliseconds);

private:
    [[nodiscard]] CComPtr<IWMPMedia3> add(const std::filesystem::path& path) const;

    VARIANT_BOOL m_muted = VARIANT_FALSE;  // as it was before
};

std::wstring infoOf(IWMPMedia* media, const wchar_t* attribute);
HRESULT setInfo(IWMPMedia* media, const wchar_t* attribute, const wchar_t* value);
HRESULT getMode(IWMPSettings* settings, const wchar_t* mode, bool& on);
// The values of a tag in the file itself; none when it cannot be read.
std::vector<std::wstring> tagsInFile(const std::filesystem::path& path, const wchar_t* tag);
// Adds a value to a tag in the file; false when the file cannot be written.
bool addTagInFile(const std::filesystem::path& path, const wchar_t* tag, const wchar_t* value);
// Whether somebody has the file open so that it cannot be opened without sharing.
bool isBusy(const std::filesystem::path& path);

}  // namespace orvane::probe
