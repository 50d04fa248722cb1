// On a Windows without the Format runtime only the embedded pictures are out of reach.

#include <gtest/gtest.h>

#include "media/format_runtime.h"
#include "media/wmp_media_item.h"
#include "tests/media/fake_media.h"
#include "tests/media/track_folder.h"

namespace orvane {
namespace {

using juce::String;
using namespace test;

TEST(WithoutRuntime, TagsAndPicturesBesideTheTrackAreStillThere) {
    const TrackFolder folder;
    const auto track = folder.track();
    addPicture(track, someImage(100));
    const Bytes before = contentOf(track);
    FakeMedia media;
    media.sourcePath = track.wstring();
    media.attributes[L"Title"] = L"T";
    media.unreadable = {L"WM/WMCollectionID"};
    const String image = textOf(folder.file(L"folder.jpg", someImage(10)));

    WmpMediaItem item;
    ASSERT_TRUE(item.Load(&media));
    juce::StringPairArray metadata;
    item.getMetadata(metadata);
    EXPECT_EQ(metadata["TrackTitle"], String("T"));
    EXPECT_EQ(metadata["AlbumArt"], String("0"));
    EXPECT_TRUE(item.Save(&media, false));
    EXPECT_FALSE(media.writes.empty());

    EXPECT_FALSE(WmpMediaItem::retrieveTrackCoverArt(&media, textOf(folder.path(L"out.jpg"))));
    EXPECT_FALSE(WmpMediaItem::setAlbumCoverArt(&media, image));
    String found;
    EXPECT_TRUE(WmpMediaItem::findCoverArtFile(&media, found));
    EXPECT_EQ(found, image);
    EXPECT_EQ(contentOf(track), before);
    EXPECT_FALSE(FormatRuntime::isLoaded());
}

}  // namespace
}  // namespace orvane
