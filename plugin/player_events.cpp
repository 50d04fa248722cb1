#include "plugin/wmp_plugin.h"

namespace orvane {

STDMETHODIMP_(void) COrVaneWmpPlugin::OpenStateChange(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlayStateChange(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::AudioLanguageChange(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::StatusChange() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::ScriptCommand(BSTR, BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::NewStream() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::Disconnect(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::Buffering(VARIANT_BOOL) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::Error() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::Warning(LONG, LONG, BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::EndOfStream(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PositionChange(double, double) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MarkerHit(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::DurationUnitChange(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::CdromMediaChange(LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistChange(IDispatch*, WMPPlaylistChangeEventType) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentPlaylistChange(WMPPlaylistChangeEventType) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentPlaylistItemAvailable(BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaChange(IDispatch*) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentMediaItemAvailable(BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::CurrentItemChange(IDispatch*) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaCollectionChange() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaCollectionAttributeStringAdded(BSTR, BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaCollectionAttributeStringRemoved(BSTR, BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaCollectionAttributeStringChanged(BSTR, BSTR, BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistCollectionChange() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistCollectionPlaylistAdded(BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistCollectionPlaylistRemoved(BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlaylistCollectionPlaylistSetAsDeleted(BSTR, VARIANT_BOOL) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::ModeChange(BSTR, VARIANT_BOOL) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MediaError(IDispatch*) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::OpenPlaylistSwitch(IDispatch*) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::DomainChange(BSTR) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::SwitchedToPlayerApplication() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::SwitchedToControl() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlayerDockedStateChange() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::PlayerReconnect() {}

STDMETHODIMP_(void) COrVaneWmpPlugin::Click(short, short, LONG, LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::DoubleClick(short, short, LONG, LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::KeyDown(short, short) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::KeyPress(short) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::KeyUp(short, short) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MouseDown(short, short, LONG, LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MouseMove(short, short, LONG, LONG) {}

STDMETHODIMP_(void) COrVaneWmpPlugin::MouseUp(short, short, LONG, LONG) {}

}  // namespace orvane
