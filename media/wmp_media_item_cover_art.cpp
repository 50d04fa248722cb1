// Cover art of WmpMediaItem: embedded in the track's file, by way of the Format runtime, or in
// picture files beside it.

#include "media/wmp_media_item.h"

#include <windows.h>

#include <algorithm>
#include <tuple>

#include "media/embedded_picture.h"
#include "media/file_name.h"
#include "media/file_rewrite.h"
#include "media/format_runtime.h"
#include "media/image_file.h"
#include "media/picture_files.h"
#include "media/step_log.h"
#include "platform/atl/atlbase.h"
#include "platform/waiting.h"
#include "platform/wm_format.h"

namespace orvane {
namespace {

constexpr DWORD kBusyTimeMs = 1000;
constexpr DWORD kBusyPauseMs = 50;

// A file opened for reading its header. The runtime, a member here, goes after what came from it.
class HeaderReader {
public:
    [[nodiscard]] HRESULT create() { return m_runtime.createSyncReader(&m_reader); }
    [[nodiscard]] HRESULT open(const juce::String& path) {
        const HRESULT result = m_reader->Open(fileNameOf(path).c_str());
        if (SUCCEEDED(result)) m_header = CComQIPtr<IWMHeaderInfo3>(m_reader);
        return result;
    }
    // Null unless a file is open and shows its header.
    [[nodiscard]] IWMHeaderInfo3* header() { return m_header; }

private:
    FormatRuntime m_runtime;
    CComPtr<IWMSyncReader> m_reader;
    CComPtr<IWMHeaderInfo3> m_header;
};

// Reading and writing, others may read meanwhile. The runtime's own documentation has it refuse
// any sharing together with writing, so ask without when it says that the arguments are wrong.
HRESULT openForEditing(IWMMetadataEditor2* editor, const juce::String& path) {
    const std::wstring name = fileNameOf(path);
    constexpr DWORD access = GENERIC_READ | GENERIC_WRITE;
    const HRESULT result = editor->OpenEx(name.c_str(), access, FILE_SHARE_READ);
    return result == E_INVALIDARG ? editor->OpenEx(name.c_str(), access, 0) : result;
}

// Somebody else has the file open: the player, which writes tags or plays it.
bool isBusy(HRESULT result) {
    return result == NS_E_FILE_OPEN_FAILED ||
           result == HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION) ||
           result == HRESULT_FROM_WIN32(ERROR_LOCK_VIOLATION);
}

// Tries again while the file is busy, and dispatches this thread's messages in between.
template <typename Open>
HRESULT openWhenFree(Open open) {
    const Deadline deadline(kBusyTimeMs);
    for (;;) {
        const HRESULT result = open();
        const DWORD left = deadline.remaining();
        if (!isBusy(result) || left == 0) return result;
        std::ignore = waitDispatchingMessages({}, std::min(left, kBusyPauseMs));
    }
}

}  // namespace

int WmpMediaItem::countCoverArt(const TrackSource& track) {
    HeaderReader reader;
    if (FAILED(reader.create()) || FAILED(track.located)) return 0;
    std::ignore = reader.open(track.path);
    if (reader.header() && EmbeddedPicture::isIn(reader.header())) return 1;
    const auto& id = track.collectionId;
    if (!track.hasDetails) return 0;
    if (!id || id->isEmpty()) return fileExists(folderPictureFile(track.path)) ? 1 : 0;
    int count = 0;
    for (const juce::String& file : albumPictureFiles(track.path, *id))
        if (fileExists(file)) ++count;
    return count;
}

bool WmpMediaItem::findCoverArtFile(const TrackSource& track, juce::String& path) {
    if (!track.hasDetails || FAILED(track.located)) return false;
    const auto& id = track.collectionId;
    const juce::StringArray candidates =
        id ? albumPictureFiles(track.path, *id) : juce::StringArray(folderPictureFile(track.path));
    for (const juce::String& file : candidates) {
        if (!fileExists(file)) continue;
        path = file;
        return true;
    }
    return false;
}

WmpMediaItem::Retrieved WmpMediaItem::retrieveTrackCoverArt(const TrackSource& track,
                                                            const juce::String& path) {
    constexpr const char* self = "WmpMediaItem::retrieveTrackCoverArt";
    const juce::String& source = track.path;
    const StepLog steps(self, source);
    HeaderReader reader;
    if (!steps.ok("get_sourceURL", track.located) ||
        !steps.ok("WMCreateSyncReader", reader.create()))
        return Retrieved::noneThere;
    const HRESULT opened = openWhenFree([&] { return reader.open(source); });
    // Not every format has a header for pictures.
    if (!steps.ok("Open", opened)) return isBusy(opened) ? Retrieved::failed : Retrieved::noneThere;
    IWMHeaderInfo3* const header = reader.header();
    if (!steps.ok("IWMHeaderInfo3", header ? S_OK : E_NOINTERFACE)) return Retrieved::noneThere;

    const auto picture = EmbeddedPicture::read(header);
    if (!picture && !EmbeddedPicture::isIn(header)) return Retrieved::noneThere;
    if (!steps.ok("reading WM/Picture", picture ? S_OK : NS_E_INVALID_DATA))
        return Retrieved::failed;
    // A picture written over the track itself would be the end of the track.
    const bool overTrack = namesSameFile(path, source);
    if (!steps.ok("writing WM/Picture", overTrack ? E_ACCESSDENIED : S_OK))
        return Retrieved::failed;
    return writeImageFile(self, path, picture->image()) ? Retrieved::written : Retrieved::failed;
}

bool WmpMediaItem::setAlbumCoverArt(const TrackSource& track, const juce::String& path) {
    constexpr const char* self = "WmpMediaItem::setAlbumCoverArt";
    const juce::String& source = track.path;
    const StepLog steps(self, source);
    const FormatRuntime runtime;
    // Until the editor is gone, which holds the file.
    const FileRewrite rewrite;
    CComPtr<IWMMetadataEditor> creator;
    if (!steps.ok("get_sourceURL", track.located) ||
        !steps.ok("CreateEventW", rewrite ? S_OK : E_OUTOFMEMORY) ||
        !steps.ok("WMCreateEditor", runtime.createEditor(&creator)))
        return false;
    const CComQIPtr<IWMMetadataEditor2> editor(creator);
    if (!steps.ok("IWMMetadataEditor2", editor ? S_OK : E_NOINTERFACE) ||
        !steps.ok("OpenEx", openWhenFree([&] { return openForEditing(editor, source); })))
        return false;
    const CComQIPtr<IWMHeaderInfo3> header(editor);
    if (!steps.ok("IWMHeaderInfo3", header ? S_OK : E_NOINTERFACE)) return false;

    const auto image = readImageFile(self, path);
    return image && EmbeddedPicture::replace(header, image->span(), steps) &&
           steps.ok("Flush", editor->Flush());
}

}  // namespace orvane
