// Fuzzes a whole session: frames split into any reads, commands that a recording plug-in carries
// out, and responses that the application can read.

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "fuzz/require.h"
#include "harness/recording_methods.h"

using namespace orvane;
using fuzz::require;
using View = std::span<const std::uint8_t>;

namespace {

// Documents lie between zero bytes, which a text cannot hold; each becomes one frame. One that
// begins with '!' goes as it is, in the place of a frame.
std::vector<std::uint8_t> streamOf(View input) {
    std::vector<std::uint8_t> stream;
    while (!input.empty()) {
        const auto end = std::find(input.begin(), input.end(), std::uint8_t{0});
        const View piece = input.first(static_cast<std::size_t>(end - input.begin()));
        input = input.subspan(std::min(piece.size() + 1, input.size()));
        const bool raw = !piece.empty() && piece.front() == '!';
        const auto block =
            raw ? std::vector<std::uint8_t>(piece.begin() + 1, piece.end()) : frame::encode(piece);
        stream.insert(stream.end(), block.begin(), block.end());
    }
    return stream;
}

void requireAnswer(const OrvaneCommand& command, bool answer) {
    static const std::vector<std::string_view> known = OrvaneCommand::names();
    test::RecordingMethods methods;
    methods.answer = answer;
    int calls = 0;
    methods.onCall = [&calls](const std::string&) { ++calls; };
    const OrvaneResponse response = command.executeCommand(&methods);

    const std::string name = command.getName().toStdString();
    const bool isKnown = std::find(known.begin(), known.end(), name) != known.end();
    require(calls <= 1, "a command calls one operation");
    require(isKnown || calls == 0, "an unknown command calls nothing");
    require(calls == 0 || methods.lastCall.rfind(name + "(", 0) == 0,
            "a command calls the operation of its name");
    // Nothing to set is no call, and no result; an index that is no number is no call, and false.
    require(!isKnown || calls == 1 ||
                (name.rfind("setMediaInfo", 0) == 0 && response.getParameters().empty()) ||
                (name == "setMediaInfoToIndex" && !response.getReturnValue()),
            "a known command calls its operation");
    require(calls == 0 || answer || !response.getReturnValue() || name == "close" ||
                name == "getTrackCount",
            "what failed is not answered as done");

    const auto received = OrvaneMessage::parsePayload(response.toPayload());
    const auto* const read = dynamic_cast<const OrvaneResponse*>(received.get());
    require(read != nullptr, "the application can read the answer");
    require(read->getName() == command.getName(), "the answer bears the command's name");
    require(read->getReturnValue() == response.getReturnValue(), "the answer says the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    View input(data, size);
    const std::uint8_t choice = fuzz::takeChoice(input);
    const std::size_t step = choice < 0x80 ? frame::Reader::kMaxStep : choice - 0x7FU;
    const auto stream = streamOf(input);
    frame::Reader reader;
    for (View rest(stream); !rest.empty();) {
        const auto room = reader.room();
        const std::size_t count = std::min({step, room.size(), rest.size()});
        std::copy_n(rest.begin(), count, room.begin());
        rest = rest.subspan(count);
        if (!reader.advance(count)) continue;
        const auto message = OrvaneMessage::parsePayload(reader.payload());
        if (const auto* command = dynamic_cast<const OrvaneCommand*>(message.get()))
            requireAnswer(*command, choice % 2 != 0);
    }
    return 0;
}
