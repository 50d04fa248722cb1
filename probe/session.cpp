#include "probe/session.h"

#include <string>

#include "platform/handles.h"
#include "standins/asf/asf_file.h"

namespace orvane::probe {

namespace {

constexpr int kMostLeftovers = 20;

std::u16string utf16(const wchar_t* text) {
    const std::wstring wide(text);
    return {wide.begin(), wide.end()};
}

}  // namespace

Session::Session(const Subject& asked) : subject(asked) {
    subject.core->get_mediaCollection(&library);
    subject.core->get_controls(&controls);
    subject.core->get_settings(&settings);
    if (settings) {
        settings->put_autoStart(VARIANT_FALSE);
        settings->get_mute(&m_muted);
        settings->put_mute(VARIANT_TRUE);
    }
    std::error_code failed;
    for (const auto& path : {trackPath(), filmPath()}) {
        for (int left = 0; left < kMostLeftovers && remove(path); ++left) {
        }
        std::filesystem::copy_file(subject.sample, path,
                                   std::filesystem::copy_options::overwrite_existing, failed);
    }
    if (!addTagInFile(trackPath(), L"Author", L"Second Artist")) return;
    track = add(trackPath());
    film = add(filmPath());
}

Session::~Session() {
    if (track) {
        subject.core->put_URL(CComBSTR(L""));
        subject.core->close();
    }
    if (settings) settings->put_mute(m_muted);
    for (const auto& path : {trackPath(), filmPath()}) static_cast<void>(remove(path));
}

std::filesystem::path Session::trackPath() const { return subject.folder / L"OrVane probe.wma"; }
std::filesystem::path Session::filmPath() const { return subject.folder / L"OrVane probe.wmv"; }

CComPtr<IWMPMedia3> Session::add(const std::filesystem::path& path) const {
    CComPtr<IWMPMedia> media;
    if (library) library->add(CComBSTR(path.c_str()), &media);
    return CComPtr<IWMPMedia3>(CComQIPtr<IWMPMedia3>(media));
}

CComPtr<IWMPPlaylist> Session::itemsOf(const std::wstring& path) const {
    CComPtr<IWMPPlaylist> found;
    if (library) library->getByAttribute(CComBSTR(L"SourceURL"), CComBSTR(path.c_str()), &found);
    return found;
}

CComPtr<IWMPMedia3> Session::trackAgain() const {
    CComPtr<IWMPMedia> media;
    if (const auto items = itemsOf(trackPath())) items->get_Item(0, &media);
    return CComPtr<IWMPMedia3>(CComQIPtr<IWMPMedia3>(media));
}

bool Session::remove(const std::filesystem::path& path) const {
    CComPtr<IWMPMedia> media;
    const auto items = itemsOf(path);
    return items && SUCCEEDED(items->get_Item(0, &media)) && media &&
           SUCCEEDED(library->remove(media, VARIANT_FALSE));
}

bool Session::wait(const std::function<bool()>& holds, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;; MsgWaitForMultipleObjectsEx(0, nullptr, 20, QS_ALLINPUT, MWMO_INPUTAVAILABLE)) {
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);)
            DispatchMessageW(&message);
        if (holds()) return true;
        if (GetTickCount64() >= end) return false;
    }
}

std::wstring infoOf(IWMPMedia* media, const wchar_t* attribute) {
    CComBSTR value;
    if (media == nullptr || FAILED(media->getItemInfo(CComBSTR(attribute), &value))) return {};
    return {value.m_str, value.m_str + SysStringLen(value.m_str)};
}

HRESULT setInfo(IWMPMedia* media, const wchar_t* attribute, const wchar_t* value) {
    return media->setItemInfo(CComBSTR(attribute), CComBSTR(value));
}

HRESULT getMode(IWMPSettings* settings, const wchar_t* mode, bool& on) {
    VARIANT_BOOL value = VARIANT_FALSE;
    const HRESULT result =
        settings == nullptr ? E_NOTIMPL : settings->getMode(CComBSTR(mode), &value);
    on = result == S_OK && value != VARIANT_FALSE;
    return result;
}

std::vector<std::wstring> tagsInFile(const std::filesystem::path& path, const wchar_t* tag) {
    std::string error;
    std::vector<std::wstring> values;
    const auto header = asf::readHeader(path, error);
    if (!header) return values;
    for (const asf::Attribute& attribute : header->attributes()) {
        const std::u16string text = attribute.text();
        if (attribute.name == utf16(tag)) values.emplace_back(text.begin(), text.end());
    }
    return values;
}

bool addTagInFile(const std::filesystem::path& path, const wchar_t* tag, const wchar_t* value) {
    std::string error;
    auto header = asf::readHeader(path, error);
    if (!header) return false;
    header->attributes().push_back(asf::Attribute::fromText(utf16(tag), utf16(value)));
    return asf::replaceHeader(path, *header, error);
}

bool isBusy(const std::filesystem::path& path) {
    const UniqueFile file(
        CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    return !file && GetLastError() == ERROR_SHARING_VIOLATION;
}

}  // namespace orvane::probe
