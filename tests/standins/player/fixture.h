#pragma once

// A player in this process, over a folder of its own with copies of the sample tracks.

#include <gtest/gtest.h>
#include <wmp.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "standins/player/com_support.h"
#include "standins/player/player.h"

namespace orvane::standin {

class PlayerTest : public testing::Test {
protected:
    void SetUp() override {
        m_folder = std::filesystem::temp_directory_path() /
                   ("standin_player_" + std::to_string(GetCurrentProcessId()));
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
    }
    void TearDown() override {
        m_player.reset();
        std::error_code ignored;
        std::filesystem::remove_all(m_folder, ignored);
        EXPECT_EQ(liveObjects(), 0) << "the player or the test leaked objects";
    }

    // A copy of a sample track in the library folder.
    void sample(const std::wstring& name) {
        std::filesystem::copy_file(std::filesystem::path(ORVANE_TEST_DATA) / "sakura.wma",
                                   m_folder / name);
    }

    Player& start(PlayerOptions options = {}) {
        m_player.reset();
        if (options.library.empty() && options.synthetic == 0) options.library = m_folder;
        m_player = std::make_unique<Player>(std::move(options));
        std::string error;
        EXPECT_TRUE(m_player->openLibrary(error)) << error;
        return *m_player;
    }

    static HRESULT write(const ComRef<IWMPMedia>& item, const wchar_t* attribute,
                         const wchar_t* value) {
        return item->setItemInfo(Text(attribute).get(), Text(value).get());
    }
    ComApartment m_com;
    std::filesystem::path m_folder;
    std::unique_ptr<Player> m_player;
};

}  // namespace orvane::standin
