#include "plugin/wmp_plugin.h"

namespace orvane {

bool COrVaneWmpPlugin::pause() { return false; }

bool COrVaneWmpPlugin::stop() { return false; }

bool COrVaneWmpPlugin::startCurrent() { return false; }

bool COrVaneWmpPlugin::start(const juce::String&) { return false; }

bool COrVaneWmpPlugin::isPlaying() { return false; }

bool COrVaneWmpPlugin::isPaused() { return false; }

bool COrVaneWmpPlugin::isShufflePlay() { return false; }

bool COrVaneWmpPlugin::isRepeatTrack() { return false; }

bool COrVaneWmpPlugin::isRepeatAll() { return false; }

bool COrVaneWmpPlugin::isInSpecialMode() { return false; }

bool COrVaneWmpPlugin::supportsRandomTrackAccess() { return true; }

void COrVaneWmpPlugin::close() {}

}  // namespace orvane
