#pragma once

// The program as a whole: the mutex, the two pipes, what is printed, and the lines that are run.

#include <memory>
#include <thread>

#include "platform/handles.h"
#include "standins/app/app_pipe.h"
#include "standins/app/interpreter.h"
#include "standins/app/terminal.h"

namespace orvane::standin::app {

struct Options {
    String launchedBy;      // the player that started this program, "" when a person did
    juce::File script;      // lines to run in place of a prompt
    juce::File transcript;  // receives everything printed
    juce::File record;      // a folder that receives the bytes of both pipes
};

class StandInApplication : private InterpreterHost, private StandInPipe::Listener {
public:
    explicit StandInApplication(Options options) : m_options(std::move(options)) {}

    // Until the script or the person is done; the program's exit code.
    int run();

private:
    bool isConnected(PipeId pipe) override { return pipeOf(pipe).hasClient(); }
    bool send(const OrvaneMessage& message) override;
    bool sendBytes(std::span<const std::uint8_t> bytes) override;
    void drop(PipeId pipe) override { pipeOf(pipe).drop(); }
    void hold(PipeId pipe, bool held) override { pipeOf(pipe).hold(held); }
    void print(const String& text, bool withTime) override;

    void clientChanged(PipeId pipe, const String& how) override;
    void payloadCame(PipeId pipe, std::span<const std::uint8_t> payload) override;

    void runPrompt();
    void record(PipeId pipe, const char* to, std::span<const std::uint8_t> frame);
    StandInPipe& pipeOf(PipeId pipe) { return pipe == PipeId::event ? m_events : m_commands; }

    const Options m_options;
    Terminal m_terminal;
    std::mutex m_printing;
    std::unique_ptr<juce::FileOutputStream> m_transcript;
    Arrivals m_arrivals;
    Interpreter m_interpreter{*this, m_arrivals};
    const juce::uint32 m_begin = juce::Time::getMillisecondCounter();
    UniqueHandle m_instance;
    StandInPipe m_events{PipeId::event, *this};
    StandInPipe m_commands{PipeId::command, *this};
    std::jthread m_keeper;  // opens the pipes again for the next client
};

}  // namespace orvane::standin::app
