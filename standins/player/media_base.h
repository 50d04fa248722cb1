#pragma once

// A media item with every method that no plug-in asks for; what one asks for is the derived
// object's.

#include <wmp.h>

#include "standins/player/com_support.h"

namespace orvane::standin {

class MediaBase : public DispatchObject<IWMPMedia3> {
public:
    STDMETHOD(get_isIdentical)(IWMPMedia*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    ORVANE_PROPERTY_NOT_MADE(name, BSTR)
    STDMETHOD(get_duration)(double*) override { return E_NOTIMPL; }
    STDMETHOD(get_imageSourceWidth)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(get_imageSourceHeight)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(get_markerCount)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(getMarkerTime)(LONG, double*) override { return E_NOTIMPL; }
    STDMETHOD(getMarkerName)(LONG, BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(get_durationString)(BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(get_attributeCount)(LONG*) override { return E_NOTIMPL; }
    STDMETHOD(getAttributeName)(LONG, BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(getItemInfoByAtom)(LONG, BSTR*) override { return E_NOTIMPL; }
    STDMETHOD(isMemberOf)(IWMPPlaylist*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(isReadOnlyItem)(BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHOD(get_error)(IWMPErrorItem**) override { return E_NOTIMPL; }
    STDMETHOD(getAttributeCountByType)(BSTR, BSTR, LONG*) override { return E_NOTIMPL; }
    STDMETHOD(getItemInfoByType)(BSTR, BSTR, LONG, VARIANT*) override { return E_NOTIMPL; }
};

}  // namespace orvane::standin
