#include "standins/player/media_library.h"

#include <algorithm>
#include <map>
#include <utility>

#include "platform/handles.h"
#include "standins/asf/file.h"
#include "standins/support/wide_text.h"

namespace orvane::standin {

namespace {

struct FindTraits {
    using Type = HANDLE;
    static Type none() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type handle) noexcept { FindClose(handle); }
};

bool isListed(const std::wstring& name) {
    const std::wstring folded = foldCase(name);
    return folded.ends_with(L".wma") || mediaTypeOf(folded) != L"audio";
}

// Own enumeration: the standard library's stops at 260 characters.
bool findFiles(const std::wstring& root, std::vector<std::wstring>& paths) {
    bool rootRead = false;
    std::vector<std::wstring> folders = {root};
    while (!folders.empty()) {
        const std::wstring folder = std::move(folders.back());
        folders.pop_back();
        WIN32_FIND_DATAW entry{};
        const BasicHandle<FindTraits> search(
            FindFirstFileW(asf::extendedLength(folder + L"\\*").c_str(), &entry));
        if (!search) continue;
        rootRead = true;
        const std::wstring inside = folder + L"\\";
        do {
            const std::wstring name = entry.cFileName;
            if (name == L"." || name == L"..") continue;
            const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
            if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                if (isListed(name)) paths.push_back(inside + name);
            } else if (!isLink) {
                folders.push_back(inside + name);
            }
        } while (FindNextFileW(search.get(), &entry));
    }
    return rootRead;
}

std::wstring absolutePath(const std::wstring& path) {
    std::wstring result(32768, L'\0');
    const DWORD length =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(result.size()), result.data(), nullptr);
    result.resize(std::min<size_t>(length, result.size()));
    while (result.size() > 3 && result.back() == L'\\') result.pop_back();
    return result;
}

TrackPtr makeSynthetic(unsigned number) {
    const std::wstring text = std::to_wstring(number);
    auto track = std::make_shared<Track>();
    track->path = L"M:\\Synthetic\\" + text + L".wma";
    track->synthetic = true;
    track->library[L"Title"] = L"Track " + text;
    return track;
}

}  // namespace

bool Library::open(const PlayerOptions& options, std::string& error) {
    std::vector<std::wstring> paths;
    if (!options.library.empty()) {
        const std::wstring root = absolutePath(options.library.wstring());
        if (!findFiles(root, paths)) {
            error = "the library folder " + toUtf8(root) + " cannot be read";
            return false;
        }
    }
    std::multimap<std::wstring, std::wstring> ordered;  // folded, as it is
    for (const std::wstring& path : paths) ordered.emplace(foldCase(path), path);
    std::vector<std::wstring> listedTwice = options.listTwice;
    for (std::wstring& part : listedTwice) part = foldCase(part);
    for (const auto& entry : ordered) {
        const auto named = [&](const auto& part) { return entry.first.find(part) != part.npos; };
        const bool twice = std::any_of(listedTwice.begin(), listedTwice.end(), named);
        if (twice) add(entry.second);
        add(entry.second);
    }
    for (unsigned i = 1; i <= options.synthetic; ++i) list(makeSynthetic(i));
    return true;
}

void Library::list(TrackPtr track) {
    if (m_tracks.use_count() > 1) m_tracks = std::make_shared<TrackList>(*m_tracks);
    track->inLibrary = true;
    m_byPath[foldCase(track->path)].push_back(track);
    m_tracks->push_back(std::move(track));
}

TrackPtr Library::add(const std::wstring& path) {
    auto track = std::make_shared<Track>();
    track->path = path;
    list(track);
    return track;
}

bool Library::remove(const TrackPtr& track) {
    const auto known = m_byPath.find(foldCase(track->path));
    if (known == m_byPath.end() || std::erase(known->second, track) == 0) return false;
    if (known->second.empty()) m_byPath.erase(known);
    track->inLibrary = false;
    m_tracks = std::make_shared<TrackList>(*m_tracks);
    std::erase(*m_tracks, track);
    return true;
}

PlaylistPtr Library::all() const {
    auto view = std::make_shared<Playlist>();
    view->isView = true;
    view->items = m_tracks;
    return view;
}

PlaylistPtr Library::withPath(const std::wstring& path) const {
    auto view = std::make_shared<Playlist>();
    view->isView = true;
    const auto found = m_byPath.find(foldCase(path));
    if (found != m_byPath.end()) *view->items = found->second;
    return view;
}

TrackPtr Library::firstWithPath(const std::wstring& path) const {
    const auto found = m_byPath.find(foldCase(path));
    return found == m_byPath.end() ? nullptr : found->second.front();
}

std::vector<PlaylistPtr> Library::playlistsNamed(const std::wstring& name) const {
    std::vector<PlaylistPtr> result;
    std::copy_if(m_playlists.begin(), m_playlists.end(), std::back_inserter(result),
                 [&](const PlaylistPtr& playlist) { return playlist->name == name; });
    return result;
}

PlaylistPtr Library::makePlaylist(const std::wstring& name) {
    auto playlist = std::make_shared<Playlist>();
    playlist->name = name;
    m_playlists.push_back(playlist);
    return playlist;
}

bool Library::removePlaylist(const PlaylistPtr& playlist) {
    return std::erase(m_playlists, playlist) > 0;
}

}  // namespace orvane::standin
