#include "standins/player/track.h"

#include <algorithm>
#include <cwctype>
#include <filesystem>
#include <optional>
#include <set>
#include <utility>

#include "standins/asf/asf_file.h"
#include "standins/asf/file.h"

namespace orvane::standin {

namespace {

// A plug-in reads some twenty attributes of one track in a row, so a few files are enough.
constexpr size_t kRemembered = 8;
// No tag that is shown as text is longer; pictures are.
constexpr size_t kLargestShown = 64 * 1024;

const std::set<std::wstring>& readOnlyAttributes() {
    static const std::set<std::wstring> names = {
        L"SourceURL",        L"Bitrate",         L"Duration",      L"FileSize",
        L"MediaType",        L"ReleaseDateYear", L"UserPlayCount", L"UserLastPlayedTime",
        L"WM/WMCollectionID"};
    return names;
}

// Kept by the player about its user, in its own library and not in the file.
bool isUserAttribute(const std::wstring& name) { return name.starts_with(L"User"); }

std::wstring wide(const std::u16string& text) { return {text.begin(), text.end()}; }
std::u16string utf16(const std::wstring& text) { return {text.begin(), text.end()}; }

bool isYear(const std::wstring& text) {
    return text.size() == 4 &&
           std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

// The year of a date as written month/day/year with or without a time, or of a year alone.
std::optional<std::wstring> yearOfDate(const std::wstring& date) {
    if (isYear(date)) return date;
    const size_t first = date.find(L'/');
    const size_t second = first == std::wstring::npos ? first : date.find(L'/', first + 1);
    if (second == std::wstring::npos) return std::nullopt;
    const size_t end = date.find(L' ', second);
    const size_t length = end == std::wstring::npos ? end : end - second - 1;
    std::wstring year = date.substr(second + 1, length);
    if (!isYear(year)) return std::nullopt;
    return year;
}

bool fileFacts(const std::wstring& path, std::uint64_t& size, std::uint64_t& modified) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(asf::extendedLength(path).c_str(), GetFileExInfoStandard, &data))
        return false;
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return false;
    size = (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
    modified = (std::uint64_t{data.ftLastWriteTime.dwHighDateTime} << 32) |
               data.ftLastWriteTime.dwLowDateTime;
    return true;
}

std::wstring valueOr(const std::map<std::wstring, std::wstring>& map, const std::wstring& key) {
    const auto found = map.find(key);
    return found == map.end() ? std::wstring() : found->second;
}

}  // namespace

std::wstring foldCase(std::wstring text) {
    if (!text.empty()) CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

const TagStore::Snapshot* TagStore::snapshot(const Track& track) {
    Snapshot fresh;
    fresh.path = track.path;
    if (!fileFacts(track.path, fresh.size, fresh.modified)) return nullptr;
    for (const Snapshot& known : m_recent) {
        if (known.path == fresh.path && known.size == fresh.size &&
            known.modified == fresh.modified)
            return &known;
    }
    std::string error;
    const auto header =
        asf::readHeader(std::filesystem::path(asf::extendedLength(track.path)), error);
    if (!header) return nullptr;
    for (const asf::Attribute& attribute : header->attributes()) {
        if (attribute.value.size() <= kLargestShown)
            fresh.tags.emplace(wide(attribute.name), wide(attribute.text()));
    }
    fresh.bitrate = header->bitrate();
    fresh.durationHns = header->durationHns();
    forget(track.path);
    m_recent.push_front(std::move(fresh));
    if (m_recent.size() > kRemembered) m_recent.pop_back();
    return &m_recent.front();
}

void TagStore::forget(const std::wstring& path) {
    std::erase_if(m_recent, [&](const Snapshot& known) { return known.path == path; });
}

HRESULT TagStore::read(const Track& track, const std::wstring& attribute, std::wstring& value) {
    value.clear();
    if (attribute == L"SourceURL") {
        value = track.path;
        return S_OK;
    }
    if (attribute == L"MediaType") {
        value = L"audio";
        return S_OK;
    }
    const std::wstring tag =
        attribute == L"ReleaseDateYear" || attribute == L"ReleaseDate" ? L"WM/Year" : attribute;
    if (track.synthetic || isUserAttribute(tag)) {
        value = valueOr(track.memory, tag);
    } else if (const Snapshot* file = snapshot(track)) {
        if (tag == L"Bitrate")
            value = std::to_wstring(file->bitrate);
        else if (tag == L"Duration")
            value = std::to_wstring(static_cast<double>(file->durationHns) / 1e7);
        else if (tag == L"FileSize")
            value = std::to_wstring(file->size);
        else
            value = valueOr(file->tags, tag);
    }
    if (attribute == L"ReleaseDateYear") value = value.substr(0, 4);
    return S_OK;
}

HRESULT TagStore::write(Track& track, const std::wstring& attribute, const std::wstring& value) {
    if (attribute.empty()) return E_INVALIDARG;
    if (readOnlyAttributes().contains(attribute)) return E_ACCESSDENIED;

    std::wstring tag = attribute;
    std::wstring text = value;
    if (attribute == L"ReleaseDate") {
        tag = L"WM/Year";
        if (!value.empty()) {
            const auto year = yearOfDate(value);
            if (!year) return E_INVALIDARG;
            text = *year;
        }
    }
    if (track.synthetic || isUserAttribute(tag)) {
        track.memory[tag] = text;
        return S_OK;
    }

    const std::wstring path = asf::extendedLength(track.path);
    const DWORD flags = GetFileAttributesW(path.c_str());
    if (flags == INVALID_FILE_ATTRIBUTES) return HRESULT_FROM_WIN32(GetLastError());
    // A new file in its place would not be read-only any more.
    if ((flags & FILE_ATTRIBUTE_READONLY) != 0) return E_ACCESSDENIED;

    // Read anew: others write pictures into the same header.
    const std::filesystem::path file(path);
    std::string error;
    auto header = asf::readHeader(file, error);
    if (!header) return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
    header->setText(utf16(tag), utf16(text));
    forget(track.path);
    return asf::replaceHeader(file, *header, error) ? S_OK : E_ACCESSDENIED;
}

double TagStore::durationSeconds(const Track& track) {
    const Snapshot* file = track.synthetic ? nullptr : snapshot(track);
    return file == nullptr ? 0 : static_cast<double>(file->durationHns) / 1e7;
}

}  // namespace orvane::standin
