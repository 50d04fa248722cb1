#include "plugin/wmp_plugin.h"

#include <cstdint>
#include <cwchar>

#include "common/messages/player_name.h"
#include "media/com_text.h"
#include "platform/host_call.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr const char* kSetPropertyName = "COrVaneWmpPlugin::SetProperty";

// Only such an array holds interface pointers, whatever the VARIANT around it says.
bool isListOfObjects(const SAFEARRAY& array) {
    return array.cDims == 1 && array.cbElements == sizeof(IUnknown*) &&
           (array.fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) != 0 &&
           (array.pvData != nullptr || array.rgsabound[0].cElements == 0);
}

// What the player hands over: a copy of its array, which holds the elements whatever becomes of
// the player's own. Elements count from 0, whatever the array's bounds say.
class SentObjects {
public:
    explicit SentObjects(const VARIANT* value) {
        if (value == nullptr || value->vt != (VT_ARRAY | VT_UNKNOWN)) return;
        m_valid = value->parray == nullptr;
        if (m_valid || !isListOfObjects(*value->parray)) return;
        if (FAILED(SafeArrayCopy(value->parray, &m_array)) || m_array == nullptr) return;
        m_valid = true;
        void* data = nullptr;
        if (FAILED(SafeArrayAccessData(m_array, &data))) return;
        m_elements = static_cast<IUnknown**>(data);
    }
    ~SentObjects() {
        if (m_elements != nullptr) SafeArrayUnaccessData(m_array);
        if (m_array != nullptr) SafeArrayDestroy(m_array);
    }
    SentObjects(const SentObjects&) = delete;
    SentObjects& operator=(const SentObjects&) = delete;

    // Whether the value was a list of objects at all, be it an empty one.
    [[nodiscard]] bool valid() const { return m_valid; }
    [[nodiscard]] int count() const {
        return m_elements == nullptr ? 0 : static_cast<int>(m_array->rgsabound[0].cElements);
    }
    [[nodiscard]] IUnknown* operator[](int index) const { return m_elements[index]; }

private:
    SAFEARRAY* m_array = nullptr;
    IUnknown** m_elements = nullptr;
    bool m_valid = false;
};

// An empty path names no file, and would end the list for its reader.
void addPath(juce::StringArray& paths, IWMPMedia& media) {
    CComBSTR path;
    if (SUCCEEDED(media.get_sourceURL(&path)) && path.Length() > 0) paths.add(textOf(path));
}

juce::StringArray pathsOf(const SentObjects& media) {
    juce::StringArray paths;
    paths.ensureStorageAllocated(media.count());
    for (int i = 0; i < media.count(); ++i) {
        const CComQIPtr<IWMPMedia> item(media[i]);
        if (!item) continue;
        syslog(LOG_DEBUG, "%s: item %d: punk: 0x%X", kSetPropertyName, i,
               static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(item.p)));
        addPath(paths, *item);
    }
    return paths;
}

juce::StringArray pathsOf(IWMPPlaylist& playlist, LONG count) {
    juce::StringArray paths;
    for (LONG i = 0; i < count; ++i) {
        CComPtr<IWMPMedia> item;
        if (SUCCEEDED(playlist.get_Item(i, &item)) && item) addPath(paths, *item);
    }
    return paths;
}

}  // namespace

STDMETHODIMP COrVaneWmpPlugin::SetProperty(const WCHAR* name, const VARIANT* value) {
    const bool isMedia = name != nullptr && std::wcscmp(name, PLUGIN_MISC_MEDIASENDTO) == 0;
    const bool isPlaylists = name != nullptr && std::wcscmp(name, PLUGIN_MISC_PLAYLISTSENDTO) == 0;
    if (!isMedia && !isPlaylists) return E_NOTIMPL;

    const HostCall inProgress;
    try {
        // Calls into the player and the link below may let the player release us meanwhile.
        const CComPtr<IUnknown> self(GetUnknown());
        const auto send = [this](const juce::StringArray& paths) {
            if (AppConnector* const link = m_connector.get())
                link->cleanTracks(playerName(), paths);
        };

        const SentObjects sent(value);
        if (isMedia && sent.valid()) send(pathsOf(sent));
        for (int i = 0; isPlaylists && i < sent.count(); ++i) {
            const CComQIPtr<IWMPPlaylist> playlist(sent[i]);
            LONG count = 0;
            if (playlist && SUCCEEDED(playlist->get_count(&count))) send(pathsOf(*playlist, count));
        }
    } catch (...) {
        // What there is no memory for is not sent.
    }
    return S_OK;
}

bool COrVaneWmpPlugin::sendSelectedTracks() {
    // Nothing hooks the player's track list, so there is no selection to read.
    syslog(LOG_DEBUG, "%s: nada!", "COrVaneWmpPlugin::SendSelectedTracks");
    return true;
}

}  // namespace orvane
