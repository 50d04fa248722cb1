// The lines that send frames and bytes as no good peer does, and those that disturb the pipes; the
// rest of the interpreter is in interpreter.cpp.

#include <thread>

#include "standins/app/clean_library.h"
#include "standins/app/frame_scanner.h"
#include "standins/app/interpreter.h"
#include "standins/app/protocol.h"
#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

// A reader that refuses a header takes the next eight bytes for one, and so on: only a payload of
// whole eights leaves it where the next frame begins.
std::string inWholeEights(std::string payload) {
    payload.resize((payload.size() + 7) / 8 * 8, '\0');
    return payload;
}

}  // namespace

Interpreter::Outcome Interpreter::sendBytes(std::string_view bytes, const std::string& what) {
    if (!m_link.isConnected(PipeId::command)) return failed(kConnectHint);
    m_responsePlace = m_arrivals.count();
    m_output.print(Output::Kind::traffic, fitted("sent", 10) + what + ": " +
                                              std::to_string(bytes.size()) + " bytes, " +
                                              hexBytes(bytes));
    const std::string error = m_link.send(PipeId::command, bytes);
    return error.empty() ? Outcome::done : failed(what + " could not be sent: " + error);
}

Parsed<std::string> Interpreter::payloadOf(const Words& words, std::size_t from) {
    if (words.size() <= from) return {commandPayload("getTrackCount", {}), {}};
    const Lookup lookup = findCommand(words[from]);
    const Words parameterWords(words.begin() + static_cast<std::ptrdiff_t>(from) + 1, words.end());
    if (lookup.command && lookup.command->sent) {
        const auto parameters = commandParameters(*lookup.command, parameterWords);
        if (!parameters) return {{}, parameters.error};
        return {commandPayload(lookup.command->name, parameters.value), {}};
    }
    return {
        {},
        "'" + onOneLine(words[from], 60) + "' is no command that can be sent; 'list' gives them"};
}

Interpreter::Outcome Interpreter::raw(const Words& words, std::string_view) {
    std::string bytes, digits;
    for (const std::string& word : words) digits += word;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        const std::string_view two = std::string_view(digits).substr(i, 2);
        const auto value = [](char c) {
            return c >= '0' && c <= '9'   ? c - '0'
                   : c >= 'a' && c <= 'f' ? c - 'a' + 10
                   : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                          : -1;
        };
        if (value(two[0]) < 0 || value(two[1]) < 0)
            return wrong("'" + std::string(two) +
                         "' is no byte; raw takes hex digits: raw 2C9EB4F2");
        bytes += static_cast<char>(value(two[0]) * 16 + value(two[1]));
    }
    if (bytes.empty() || digits.size() % 2 != 0)
        return wrong("raw takes two hex digits for each byte: raw 2C 9E B4 F2");
    return sendBytes(bytes, "raw bytes");
}

Interpreter::Outcome Interpreter::xml(const Words& words, std::string_view rest) {
    if (rest.substr(0, 1) == "<")
        return sendBytes(frameAround(std::string(rest) + '\0'), "a document as typed");
    if (words.size() != 1) return wrong("xml takes one file, or a document that begins with <");
    const auto content = contentOf(pathFrom(words[0]));
    if (!content) return wrong("cannot read " + words[0]);
    return sendBytes(frameAround(*content + '\0'), "the document in " + words[0]);
}

Interpreter::Outcome Interpreter::badMagic(const Words& words, std::string_view) {
    const auto payload = payloadOf(words, 0);
    if (!payload) return wrong(payload.error);
    const std::string bytes = inWholeEights(payload.value);
    return sendBytes(frameAround(bytes, static_cast<std::uint32_t>(bytes.size()), 0xDEADBEEF),
                     "a frame with a bad magic");
}

Interpreter::Outcome Interpreter::badLength(const Words& words, std::string_view) {
    const auto claimed = words.empty() ? std::optional<unsigned>() : parseNumber(words[0]);
    if (!claimed) return wrong("badlength takes the length to claim: badlength 10485760");
    const auto payload = payloadOf(words, 1);
    if (!payload) return wrong(payload.error);
    return sendBytes(
        frameAround(frame::isPayloadLength(*claimed) ? payload.value : inWholeEights(payload.value),
                    *claimed),
        "a frame that claims " + words[0] + " bytes");
}

Interpreter::Outcome Interpreter::cut(const Words& words, std::string_view) {
    const auto length = words.empty() ? std::optional<unsigned>() : parseNumber(words[0]);
    if (!length || *length == 0) return wrong("cut takes how many bytes to send: cut 20");
    const auto payload = payloadOf(words, 1);
    if (!payload) return wrong(payload.error);
    const std::string frame = frameAround(payload.value);
    const Outcome outcome =
        sendBytes(std::string_view(frame).substr(0, *length), "the beginning of a frame");
    if (outcome == Outcome::done) m_link.drop(PipeId::command);
    return outcome;
}

Interpreter::Outcome Interpreter::slow(const Words& words, std::string_view) {
    const auto pause = words.empty() ? std::optional<unsigned>() : parseNumber(words[0]);
    const auto payload = payloadOf(words, pause ? 1 : 0);
    if (!payload) return wrong(payload.error);
    if (!m_link.isConnected(PipeId::command)) return failed(kConnectHint);
    m_responsePlace = m_arrivals.count();
    const std::string frame = frameAround(payload.value);
    m_output.print(Output::Kind::traffic, fitted("sent", 10) + "a frame byte by byte: " +
                                              std::to_string(frame.size()) + " bytes");
    for (const char c : frame) {
        const std::string error = m_link.send(PipeId::command, std::string_view(&c, 1));
        if (!error.empty()) return failed("a byte could not be sent: " + error);
        std::this_thread::sleep_for(std::chrono::milliseconds(pause.value_or(1)));
    }
    return Outcome::done;
}

Interpreter::Outcome Interpreter::burst(const Words& words, std::string_view) {
    const auto times = words.empty() ? std::optional<unsigned>() : parseNumber(words[0]);
    if (!times || *times == 0 || *times > 10'000)
        return wrong("burst takes how many frames, up to 10000: burst 10 isPlaying");
    const auto payload = payloadOf(words, 1);
    if (!payload) return wrong(payload.error);
    const std::string frame = frameAround(payload.value);
    std::string frames;
    for (unsigned i = 0; i < *times; ++i) frames += frame;
    return sendBytes(frames, words[0] + " frames at once");
}

Parsed<std::vector<PipeId>> Interpreter::pipesNamed(const Words& words) {
    if (words.empty()) return {{PipeId::event, PipeId::command}, {}};
    if (words[0] == "event") return {{PipeId::event}, {}};
    if (words[0] == "command") return {{PipeId::command}, {}};
    return {{}, "which pipe? event, command, or nothing for both"};
}

Interpreter::Outcome Interpreter::drop(const Words& words, std::string_view) {
    const auto pipes = pipesNamed(words);
    if (!pipes) return wrong(pipes.error);
    for (const PipeId pipe : pipes.value) m_link.drop(pipe);
    return Outcome::done;
}

Interpreter::Outcome Interpreter::hold(const Words& words, std::string_view) {
    const auto pipes = pipesNamed(words);
    if (!pipes) return wrong(pipes.error);
    for (const PipeId pipe : pipes.value) m_link.hold(pipe, true);
    note("not reading any more; 'resume' reads again");
    return Outcome::done;
}

Interpreter::Outcome Interpreter::resume(const Words& words, std::string_view) {
    const auto pipes = pipesNamed(words);
    if (!pipes) return wrong(pipes.error);
    for (const PipeId pipe : pipes.value) m_link.hold(pipe, false);
    return Outcome::done;
}

}  // namespace orvane::standin::app
