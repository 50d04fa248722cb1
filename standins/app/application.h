#pragma once

// The program as a whole: the mutex, the two pipes, what is printed, and the lines that are run.

#include <fstream>
#include <memory>
#include <mutex>
#include <string>

#include "standins/app/arrivals.h"
#include "standins/app/frame_scanner.h"
#include "standins/app/interpreter.h"
#include "standins/app/options.h"
#include "standins/app/pipe_server.h"
#include "standins/app/terminal.h"

namespace orvane::standin::app {

class Application : private Link, private Output {
public:
    explicit Application(Options options);
    ~Application() override;

    // Until the script or the person is done; the program's exit code.
    int run();

private:
    // Makes frames and messages of what one pipe brings.
    class Ear final : public PipeServer::Listener {
    public:
        Ear(Application& owner, PipeId pipe) : m_owner(owner), m_pipe(pipe) {}
        void clientConnected() override;
        void bytesReceived(std::string_view bytes) override;
        void clientQuiet() override;
        void clientGone(const std::string& why) override;

    private:
        void take(const std::vector<FrameScanner::Found>& found);

        Application& m_owner;
        PipeId m_pipe;
        FrameScanner m_scanner;
        std::string m_stalled;  // the unfinished frame that a person has been told about
    };

    bool isConnected(PipeId pipe) override;
    std::string send(PipeId pipe, std::string_view bytes) override;
    void drop(PipeId pipe) override;
    void hold(PipeId pipe, bool held) override;
    void print(Kind kind, const std::string& text) override;

    void arrived(Arrival arrival);
    bool openTranscript();
    bool openPipes();
    int runScript(Interpreter& interpreter);
    void runPrompt(Interpreter& interpreter);
    PipeServer* server(PipeId pipe) {
        return pipe == PipeId::event ? m_events.get() : m_commands.get();
    }

    Options m_options;
    Terminal m_terminal;
    std::mutex m_printing;
    std::ofstream m_transcript;
    Arrivals m_arrivals;
    UniqueHandle m_instance;
    Ear m_eventEar{*this, PipeId::event};
    Ear m_commandEar{*this, PipeId::command};
    std::unique_ptr<PipeServer> m_events;
    std::unique_ptr<PipeServer> m_commands;
};

}  // namespace orvane::standin::app
