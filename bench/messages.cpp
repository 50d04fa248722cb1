// What the link's documents cost beside JUCE's own, in turns, in one run: 10,000 parameters of 100
// characters, and how both grow up to the largest payload. Also native, as nothing here needs
// Windows.

#include <juce_core/juce_core.h>

#include <string>

#include "bench/samples.h"
#include "common/messages/orvane_message.h"

namespace {

using orvane::OrvaneEvent;
using orvane::OrvaneMessage;
using orvane::bench::compare;

std::size_t sink = 0;

void row(const std::string& label, int count, int rounds) {
    juce::StringArray values;
    for (int i = 0; i < count; ++i)
        values.add(
            juce::String(i).paddedLeft('0', 10) +
            juce::String::repeatedString("C:\\Music\\An artist & co\\x", 4).substring(0, 90));
    juce::XmlElement tree("OrVaneIPC");
    tree.setAttribute("event", "CleanTracks");
    for (int i = 0; i < count; ++i)
        tree.createNewChildElement("trackPaths" + juce::String(i))->addTextElement(values[i]);

    const auto build = [&] {
        OrvaneEvent event("CleanTracks");
        event.addList("trackPaths", values);
        sink += event.toPayload().size();
    };
    const auto theirBuild = [&] {
        const juce::String text = tree.toString();
        sink += std::string(text.toRawUTF8()).size();
    };
    compare({(label + ", built and written").c_str(), build}, {"JUCE's", theirBuild}, {rounds});

    OrvaneEvent event("CleanTracks");
    event.addList("trackPaths", values);
    const auto payload = event.toPayload();
    const juce::String text = event.toDocument();
    const auto read = [&] {
        juce::StringArray list;
        OrvaneMessage::parsePayload(payload)->getList("trackPaths", list);
        sink += static_cast<std::size_t>(list.size());
    };
    const auto theirRead = [&] {
        const auto element = juce::parseXML(text);
        juce::StringArray list;
        for (const auto* child : element->getChildIterator()) list.add(child->getAllSubText());
        sink += static_cast<std::size_t>(list.size());
    };
    compare({(label + ", read and listed").c_str(), read}, {"JUCE's", theirRead}, {rounds});
}

}  // namespace

int main() {
    orvane::bench::printHeading();
    row("10,000 parameters of 100 characters", 10'000, 41);
    row("the same, 2.7 MB", 20'000, 15);
    row("the same, 5.3 MB", 40'000, 9);
    row("the same, 9.9 MB", 75'000, 5);
    return sink == 0 ? 1 : 0;
}
