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

using Names = std::set<std::wstring>;

const Names kReadOnly = {
    L"SourceURL",       L"Bitrate",       L"Duration",           L"FileSize",         L"MediaType",
    L"ReleaseDateYear", L"UserPlayCount", L"UserLastPlayedTime", L"WM/WMCollectionID"};
// Of a library item: in its file as well, and in files outside the library only.
const Names kShared = {L"Title",
                       L"Author",
                       L"Copyright",
                       L"WM/AlbumTitle",
                       L"WM/AlbumArtist",
                       L"WM/TrackNumber",
                       L"WM/Genre",
                       L"WM/Composer",
                       L"WM/OriginalReleaseYear",
                       L"WM/Publisher",
                       L"WM/UniqueFileIdentifier"};
const Names kFilesOnly = {L"WM/PartOfSet", L"Description", L"WM/Year"};

// Kept by the player in its own library and not in the file.
bool isLibraryOnly(const std::wstring& name) {
    return name.starts_with(L"User") || name == L"PartOfSet";
}

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

}  // namespace

std::wstring mediaTypeOf(const std::wstring& path) {
    const std::wstring name = foldCase(path);
    return name.ends_with(L".wmv") ? L"video" : name.ends_with(L".wpl") ? L"playlist" : L"audio";
}

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
        std::wstring text = wide(attribute.text());
        if (attribute.value.size() > kLargestShown || text.empty()) continue;
        // A writer may put the same value into two of the header's objects.
        auto& values = fresh.tags[wide(attribute.name)];
        if (std::find(values.begin(), values.end(), text) == values.end())
            values.push_back(std::move(text));
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

bool TagStore::isReadOnly(const std::wstring& attribute) { return kReadOnly.contains(attribute); }

std::vector<std::wstring> TagStore::read(const Track& track, const std::wstring& attribute) {
    if (attribute == L"SourceURL") return {track.path};
    if (attribute == L"MediaType") return {mediaTypeOf(track.path)};
    const bool isYear = attribute == L"ReleaseDateYear";
    if (isYear && track.library.contains(L"ReleaseDate"))
        return {yearOfDate(track.library.at(L"ReleaseDate")).value_or(L"")};
    if (isDocumented(track) && kFilesOnly.contains(attribute)) return {};
    const std::wstring tag =
        isYear || (attribute == L"ReleaseDate" && !isDocumented(track)) ? L"WM/Year" : attribute;
    for (const auto* own : {&track.unsaved, &track.library})
        if (const auto found = own->find(tag); found != own->end())
            return {isYear ? found->second.substr(0, 4) : found->second};
    const Snapshot* file = track.synthetic || isLibraryOnly(tag) ? nullptr : snapshot(track);
    if (file == nullptr) return {};
    if (tag == L"Bitrate") return {std::to_wstring(file->bitrate)};
    if (tag == L"Duration") return {std::to_wstring(static_cast<double>(file->durationHns) / 1e7)};
    if (tag == L"FileSize") return {std::to_wstring(file->size)};
    const auto found = file->tags.find(tag);
    if (found == file->tags.end()) return {};
    if (isYear) return {found->second.front().substr(0, 4)};
    return found->second;
}

HRESULT TagStore::write(Track& track, const std::wstring& attribute, const std::wstring& value) {
    if (attribute.empty()) return E_INVALIDARG;
    if (isReadOnly(attribute)) return E_ACCESSDENIED;
    const bool documented = isDocumented(track);
    std::wstring tag = attribute;
    std::wstring text = value;
    if (attribute == L"ReleaseDate" && !value.empty()) {
        const auto year = yearOfDate(value);
        if (!year) return E_INVALIDARG;
        if (!documented) text = *year;
    }
    if (attribute == L"ReleaseDate" && !documented) tag = L"WM/Year";
    if (track.synthetic || isLibraryOnly(tag) || tag == L"ReleaseDate") {
        track.library[tag] = text;
        return S_OK;
    }
    if (documented && !kShared.contains(tag)) return S_FALSE;
    const DWORD flags = GetFileAttributesW(asf::extendedLength(track.path).c_str());
    if (flags == INVALID_FILE_ATTRIBUTES) return HRESULT_FROM_WIN32(GetLastError());
    // A new file in its place would not be read-only any more.
    if ((flags & FILE_ATTRIBUTE_READONLY) != 0) return E_ACCESSDENIED;
    if (snapshot(track) == nullptr) return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
    track.unsaved[tag] = text;
    return S_OK;
}

bool TagStore::save(Track& track) {
    if (track.unsaved.empty()) return true;
    // Read anew: others write pictures into the same header.
    const std::filesystem::path file(asf::extendedLength(track.path));
    std::string error;
    auto header = asf::readHeader(file, error);
    if (!header) return false;
    for (const auto& [tag, text] : track.unsaved) header->setText(utf16(tag), utf16(text));
    if (!asf::replaceHeader(file, *header, error)) return false;
    forget(track.path);
    track.unsaved.clear();
    return true;
}

double TagStore::durationSeconds(const Track& track) {
    const Snapshot* file = track.synthetic ? nullptr : snapshot(track);
    return file == nullptr ? 0 : static_cast<double>(file->durationHns) / 1e7;
}

}  // namespace orvane::standin
