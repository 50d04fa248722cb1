#include "plugin/wmp_plugin.h"

namespace orvane {

bool COrVaneWmpPlugin::getCurrentMediaInfo(juce::StringPairArray&) { return false; }

bool COrVaneWmpPlugin::getMediaInfoFromPath(const juce::String&, juce::StringPairArray&,
                                            const juce::String&) {
    return false;
}

bool COrVaneWmpPlugin::getMediaInfoFromIndex(int, juce::StringPairArray&, const juce::String&) {
    return false;
}

bool COrVaneWmpPlugin::setMediaInfoToPath(const juce::String&, const juce::StringPairArray&,
                                          const juce::String&, bool) {
    return false;
}

bool COrVaneWmpPlugin::setMediaInfoToIndex(int, const juce::StringPairArray&, const juce::String&,
                                           bool) {
    return false;
}

int COrVaneWmpPlugin::getTrackCount() { return 0; }

CComPtr<IWMPMedia> COrVaneWmpPlugin::getMediaByIndex(IWMPCore*, int) { return {}; }

}  // namespace orvane
