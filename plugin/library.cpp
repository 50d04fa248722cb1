#include "plugin/library.h"

#include "media/com_text.h"

namespace orvane::library {

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
    CComPtr<IWMPMediaCollection> collection;
    CComPtr<IWMPPlaylist> matches;
    CComPtr<IWMPMedia> media;
    LONG count = 0;
    if (path.isEmpty() || !core || FAILED(core->get_mediaCollection(&collection)) || !collection ||
        FAILED(collection->getByAttribute(CComBSTR(L"SourceURL"), bstrOf(path), &matches)) ||
        !matches || FAILED(matches->get_count(&count)))
        return nullptr;
    // Which one of several is meant cannot be told; changing the wrong one would be worse.
    if (count != 1 || FAILED(matches->get_Item(0, &media))) return nullptr;
    return media;
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
