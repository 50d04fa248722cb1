// Cover art of WmpMediaItem: embedded in the track's file, by way of the Format runtime, or in
// picture files beside it.

#include "media/wmp_media_item.h"

#include <windows.h>

#include <wmp.h>

#include <optional>

#include "media/com_text.h"
#include "media/embedded_picture.h"
#include "media/file_name.h"
#include "media/format_runtime.h"
#include "media/image_file.h"
#include "media/picture_files.h"
#include "platform/atl/atlbase.h"
#include "platform/wm_format.h"

namespace orvane {
namespace {

std::optional<juce::String> sourcePathOf(IWMPMedia* media) {
    CComBSTR path;
    if (!media || FAILED(media->get_sourceURL(&path))) return std::nullopt;
    return textOf(path);
}

// The names of the pictures that a player keeps under this id are made from it. Nothing when it
// cannot be read; it may well be empty.
std::optional<juce::String> collectionIdOf(IWMPMedia3* media) {
    CComBSTR id;
    if (FAILED(media->getItemInfo(CComBSTR(L"WM/WMCollectionID"), &id))) return std::nullopt;
    return textOf(id);
}

// A file opened for reading its header. The runtime, a member here, goes after what came from it.
class HeaderReader {
public:
    [[nodiscard]] bool create() { return SUCCEEDED(m_runtime.createSyncReader(&m_reader)); }

    // Null when the file cannot be opened or shows no header.
    [[nodiscard]] IWMHeaderInfo3* open(const juce::String& path) {
        if (SUCCEEDED(m_reader->Open(fileNameOf(path).c_str())))
            m_header = CComQIPtr<IWMHeaderInfo3>(m_reader);
        return m_header;
    }

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

}  // namespace

int WmpMediaItem::countCoverArt(IWMPMedia* media) {
    HeaderReader reader;
    if (!reader.create()) return 0;
    const auto source = sourcePathOf(media);
    if (!source) return 0;
    IWMHeaderInfo3* const header = reader.open(*source);
    if (header && EmbeddedPicture::isIn(header)) return 1;

    const CComQIPtr<IWMPMedia3> media3(media);
    if (!media3) return 0;
    const auto id = collectionIdOf(media3);
    if (!id || id->isEmpty()) return fileExists(folderPictureFile(*source)) ? 1 : 0;
    int count = 0;
    for (const juce::String& file : albumPictureFiles(*source, *id))
        if (fileExists(file)) ++count;
    return count;
}

bool WmpMediaItem::findCoverArtFile(IWMPMedia* media, juce::String& path) {
    const CComQIPtr<IWMPMedia3> media3(media);
    const auto source = sourcePathOf(media);
    if (!media3 || !source) return false;
    const auto id = collectionIdOf(media3);
    const juce::StringArray candidates =
        id ? albumPictureFiles(*source, *id) : juce::StringArray(folderPictureFile(*source));
    for (const juce::String& file : candidates) {
        if (!fileExists(file)) continue;
        path = file;
        return true;
    }
    return false;
}

bool WmpMediaItem::retrieveTrackCoverArt(IWMPMedia* media, const juce::String& path) {
    HeaderReader reader;
    if (!reader.create()) return false;
    const auto source = sourcePathOf(media);
    if (!source) return false;
    IWMHeaderInfo3* const header = reader.open(*source);
    if (!header) return false;
    const auto picture = EmbeddedPicture::read(header);
    // A picture written over the track itself would be the end of the track.
    if (!picture || namesSameFile(path, *source)) return false;
    return writeImageFile("WmpMediaItem::retrieveTrackCoverArt", path, picture->image());
}

bool WmpMediaItem::setAlbumCoverArt(IWMPMedia* media, const juce::String& path) {
    const FormatRuntime runtime;
    CComPtr<IWMMetadataEditor> creator;
    if (FAILED(runtime.createEditor(&creator))) return false;
    const CComQIPtr<IWMMetadataEditor2> editor(creator);
    const auto source = sourcePathOf(media);
    if (!editor || !source || FAILED(openForEditing(editor, *source))) return false;
    const CComQIPtr<IWMHeaderInfo3> header(editor);
    if (!header) return false;

    const auto image = readImageFile("WmpMediaItem::setAlbumCoverArt", path);
    return image && EmbeddedPicture::replace(header, image->span()) && SUCCEEDED(editor->Flush());
}

}  // namespace orvane
