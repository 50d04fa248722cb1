// The probe's questions, asked of the system's own player object and of the player that is open.

#include <windows.h>

#include <ole2.h>

#include "check/machine.h"
#include "check/run.h"
#include "platform/atl/atlcomcli.h"
#include "probe/probe.h"

namespace orvane::check {

std::string askPlayer(const Kit& kit) {
    const HRESULT apartment = OleInitialize(nullptr);
    std::string lines;
    CComPtr<IWMPCore> core;
    const HRESULT made =
        CoCreateInstance(__uuidof(WindowsMediaPlayer), nullptr, CLSCTX_INPROC_SERVER,
                         __uuidof(IWMPCore), reinterpret_cast<void**>(&core));
    if (SUCCEEDED(made)) {
        const auto folder = kit.work / "rules";
        std::filesystem::create_directories(folder);
        // Wine's own object crashes when it is to play.
        const bool mayPlay = !isWine();
        for (const auto& finding :
             probe::ask({core, playerWindow(), kit.tracks() / "sakura.wma", folder, mayPlay}))
            lines += describe(finding) + "\n";
        core.Release();
    } else {
        lines = "the player's object cannot be made: error " + std::to_string(made) + "\n";
    }
    if (SUCCEEDED(apartment)) OleUninitialize();
    return lines;
}

}  // namespace orvane::check
