#include "standins/app/application.h"

#include "common/messages/frame.h"
#include "standins/app/report_lines.h"

namespace orvane::standin::app {
namespace {

constexpr const wchar_t* kInstanceMutex = L"OrVaneApp_Process";
constexpr int kLookAfterMs = 20;

enum ExitCode { good = 0, checkMissed = 1, wrongUsage = 2, noPipes = 3 };

}  // namespace

Application::Application(Options options) : m_options(std::move(options)) {}

int Application::run() {
    if (m_options.transcript != juce::File()) {
        m_transcript = std::make_unique<juce::FileOutputStream>(m_options.transcript);
        // Emptied, not made anew: somebody may be following it.
        if (!m_transcript->setPosition(0) || m_transcript->truncate().failed()) {
            m_transcript.reset();
            print("error: cannot write " + m_options.transcript.getFullPathName(), true);
            return wrongUsage;
        }
    }
    if (UniqueHandle(OpenMutexW(SYNCHRONIZE, FALSE, kInstanceMutex))) {
        print("another OrVaneApp is running already; this one ends", true);
        return good;
    }
    for (const PipeId pipe : {PipeId::event, PipeId::command}) {
        if (pipeOf(pipe).keepOpen()) continue;
        print(String("error: cannot make the pipe ") + systemName(pipe) +
                  "; another program may have made it: end that one first",
              true);
        return noPipes;
    }
    // After the pipes: a plug-in that finds the mutex expects both.
    m_instance.reset(CreateMutexW(nullptr, FALSE, kInstanceMutex));
    m_keeper = std::jthread([this](const std::stop_token& stop) {
        for (; !stop.stop_requested(); juce::Thread::sleep(kLookAfterMs)) {
            m_events.keepOpen();
            m_commands.keepOpen();
        }
    });
    const String& player = m_options.launchedBy;
    print("ready: both pipes are open" +
              (player.isEmpty() ? String() : ", launched by " + onOneLine(player, 60)),
          true);
    if (m_options.script == juce::File()) {
        runPrompt();
        return m_interpreter.isGood() ? good : checkMissed;
    }
    if (!m_options.script.existsAsFile()) {
        print("error: cannot read the script " + m_options.script.getFullPathName(), true);
        return wrongUsage;
    }
    return m_interpreter.runScript(m_options.script.loadFileAsString(),
                                   m_options.script.getFileName())
               ? good
               : checkMissed;
}

void Application::runPrompt() {
    if (m_terminal.isInteractive())
        print("'help' lists the words, TAB completes, 'quit' ends", true);
    while (m_terminal.hasInput()) {
        const auto line = m_terminal.readLine();
        if (!line) break;
        if (m_interpreter.run(*line) == Outcome::quit) return;
    }
    // Started by the plug-in there may be nobody to type: the pipes are served all the same.
    while (m_options.launchedBy.isNotEmpty()) juce::Thread::sleep(60'000);
}

bool Application::send(const OrvaneMessage& message) {
    if (m_options.record != juce::File())
        record(PipeId::command, "plug-in", frame::encode(message.toPayload()));
    return m_commands.send(message);
}

// Each pipe's frames in a file of its own, as they came and went, and a line for each in
// times.jsonl.
void Application::record(PipeId pipe, const char* to, std::span<const std::uint8_t> frame) {
    const std::lock_guard lock(m_printing);
    const auto file = m_options.record.getChildFile(pipe == PipeId::event ? "event-pipe.bin"
                                                                          : "command-pipe.bin");
    m_options.record.getChildFile("times.jsonl")
        .appendText("{\"ms\":" + String(juce::Time::getMillisecondCounter() - m_begin) +
                        ",\"file\":\"" + file.getFileName() +
                        "\",\"offset\":" + String(file.getSize()) +
                        ",\"bytes\":" + String(frame.size()) + ",\"to\":\"" + to + "\"}\n",
                    false, false, nullptr);
    file.appendData(frame.data(), frame.size());
}

bool Application::sendBytes(std::span<const std::uint8_t> bytes) {
    return m_commands.hasClient() && m_commands.sendBytes(bytes);
}

void Application::clientCame(PipeId pipe) {
    print(shownLine("link", describe(pipe), "connected"), true);
    m_arrivals.changed();
}

void Application::clientWent(PipeId pipe, const char* why) {
    print(shownLine("link", describe(pipe), String("disconnected: ") + why), true);
    m_arrivals.changed();
}

void Application::payloadCame(PipeId pipe, std::span<const std::uint8_t> payload) {
    if (m_options.record != juce::File()) record(pipe, "application", frame::encode(payload));
    const Reading reading = readPayload(pipe, payload);
    for (const String& problem : reading.problems) {
        print(shownLine("PROBLEM", describe(pipe), problem), true);
        m_interpreter.problemCame();
    }
    if (reading.message == nullptr) return;
    print(shown(*reading.message), true);
    m_arrivals.add(reading.message);
}

void Application::print(const String& text, bool withTime) {
    const std::lock_guard lock(m_printing);
    const auto now = juce::Time::getCurrentTime();
    const String line = withTime
                            ? now.formatted("%H:%M:%S.") +
                                  String(now.getMilliseconds()).paddedLeft('0', 3) + "  " + text
                            : text;
    if (m_transcript != nullptr) {
        m_transcript->writeText(line + "\n", false, false, nullptr);
        m_transcript->flush();  // somebody follows the file while we run
    }
    m_terminal.print(line);
}

}  // namespace orvane::standin::app
