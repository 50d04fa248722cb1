// What the link's documents cost beside JUCE's own, in turns, in one run: 10,000 parameters of 100
// characters, and how both grow up to the largest payload. Also native, as nothing here needs
// Windows.

#include <juce_core/juce_core.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include "common/messages/orvane_message.h"

namespace {

using orvane::OrvaneEvent;
using orvane::OrvaneMessage;

template <typename Work>
double millisecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

struct Samples {
    std::vector<double> taken;
    [[nodiscard]] double at(double share) {
        std::sort(taken.begin(), taken.end());
        return taken[static_cast<std::size_t>(share * static_cast<double>(taken.size() - 1))];
    }
};

// Both sides in turns, so that whatever else the machine does hits both alike.
template <typename Ours, typename Theirs>
void compare(const char* what, int rounds, Ours ours, Theirs theirs) {
    Samples own;
    Samples other;
    ours();
    theirs();
    for (int i = 0; i < rounds; ++i) {
        own.taken.push_back(millisecondsOf(ours));
        other.taken.push_back(millisecondsOf(theirs));
    }
    std::printf("| %s | %.2f | %.2f to %.2f | %.2f | %.2f to %.2f | %.2f |\n", what, own.at(0.5),
                own.at(0.05), own.at(0.95), other.at(0.5), other.at(0.05), other.at(0.95),
                own.at(0.5) / other.at(0.5));
    std::fflush(stdout);
}

std::size_t sink = 0;

void row(const char* label, int count, int rounds) {
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
    compare((juce::String(label) + ", built and written").toRawUTF8(), rounds, build, theirBuild);

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
    compare((juce::String(label) + ", read and listed").toRawUTF8(), rounds, read, theirRead);
}

}  // namespace

int main() {
    std::puts("| document | ours, ms | p5 to p95 | JUCE's, ms | p5 to p95 | ratio |");
    std::puts("|---|---:|---:|---:|---:|---:|");
    row("10,000 parameters of 100 characters", 10'000, 41);
    row("the same, 2.7 MB", 20'000, 15);
    row("the same, 5.3 MB", 40'000, 9);
    row("the same, 9.9 MB", 75'000, 5);
    return sink == 0 ? 1 : 0;
}
