#include "media/track_source.h"

#include <wmp.h>

#include "media/com_text.h"
#include "platform/atl/atlcomcli.h"

namespace orvane {

TrackSource::TrackSource(IWMPMedia* media) {
    if (media == nullptr) return;
    CComBSTR text;
    located = media->get_sourceURL(&text);
    if (SUCCEEDED(located)) path = textOf(text);
    const CComQIPtr<IWMPMedia3> media3(media);
    hasDetails = media3 != nullptr;
    CComBSTR id;
    if (hasDetails && SUCCEEDED(media3->getItemInfo(CComBSTR(L"WM/WMCollectionID"), &id)))
        collectionId = textOf(id);
}

}  // namespace orvane
