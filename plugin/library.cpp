#include "plugin/library.h"

#include "media/com_text.h"

namespace orvane::library {
namespace {

// The items with that source path; `count` is 0 when there are none.
CComPtr<IWMPPlaylist> itemsAt(IWMPCore* core, const juce::String& path, LONG& count) {
    CComPtr<IWMPMediaCollection> collection;
    CComPtr<IWMPPlaylist> items;
    count = 0;
    if (path.isEmpty() || !core || FAILED(core->get_mediaCollection(&collection)) || !collection ||
        FAILED(collection->getByAttribute(CComBSTR(L"SourceURL"), bstrOf(path), &items)) ||
        !items || FAILED(items->get_count(&count)))
        return nullptr;
    return items;
}

bool isPhoto(IWMPMedia* media) {
    CComBSTR type;
    return SUCCEEDED(media->getItemInfo(CComBSTR(L"MediaType"), &type)) && textOf(type) == "photo";
}

}  // namespace

CComPtr<IWMPPlaylist> allTracks(IWMPCore* core) {
    CComPtr<IWMPMediaCollection> collection;
    CComPtr<IWMPPlaylist> all;
    if (!core || FAILED(core->get_mediaCollection(&collection)) || !collection ||
        FAILED(collection->getAll(&all)))
        return nullptr;
    return all;
}

CComPtr<IWMPMedia> getMediaByIndex(IWMPCore* core, int trackIndex) {
    const CComPtr<IWMPPlaylist> all = allTracks(core);
    CComPtr<IWMPMedia> media;
    if (!all || FAILED(all->get_Item(trackIndex, &media))) return nullptr;
    return media;
}

CComPtr<IWMPMedia> getMediaByPath(IWMPCore* core, const juce::String& path) {
    LONG count = 0;
    CComPtr<IWMPMedia> media;
    const CComPtr<IWMPPlaylist> items = itemsAt(core, path, count);
    // Which one of several is meant cannot be told; changing the wrong one would be worse.
    if (count != 1 || FAILED(items->get_Item(0, &media))) return nullptr;
    return media;
}

bool mayHoldTrack(IWMPCore* core, const juce::StringArray& spellings) {
    for (const juce::String& path : spellings) {
        LONG count = 0;
        const CComPtr<IWMPPlaylist> items = itemsAt(core, path, count);
        if (!items) return true;
        for (LONG i = 0; i < count; ++i) {
            CComPtr<IWMPMedia> media;
            if (FAILED(items->get_Item(i, &media)) || !media || !isPhoto(media)) return true;
        }
    }
    return false;
}

CComPtr<IWMPPlaylist> playlistNamed(IWMPCore* core, const juce::String& name) {
    CComPtr<IWMPPlaylistCollection> collection;
    CComPtr<IWMPPlaylistArray> matches;
    CComPtr<IWMPPlaylist> playlist;
    LONG count = 0;
    if (!core || FAILED(core->get_playlistCollection(&collection)) || !collection ||
        FAILED(collection->getByName(bstrOf(name), &matches)) || !matches ||
        FAILED(matches->get_count(&count)))
        return nullptr;
    const HRESULT result =
        count == 0 ? collection->newPlaylist(bstrOf(name), &playlist) : matches->Item(0, &playlist);
    return SUCCEEDED(result) ? playlist : nullptr;
}

}  // namespace orvane::library
