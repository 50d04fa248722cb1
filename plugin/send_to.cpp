#include "plugin/wmp_plugin.h"

namespace orvane {

STDMETHODIMP COrVaneWmpPlugin::SetProperty(const WCHAR*, const VARIANT*) { return E_NOTIMPL; }

bool COrVaneWmpPlugin::sendSelectedTracks() { return true; }

}  // namespace orvane
