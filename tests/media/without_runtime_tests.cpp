// On a Windows without the Format runtime only the embedded pictures are out of reach.

#include <gtest/gtest.h>

#include "media/wmp_media_item.h"
#include "tests/media/fake_media.h"
#include "tests/media/track_folder.h"

namespace orvane {
namespace {

using namespace test;

TEST(WithoutRuntime, TagsAndPictureFilesStillWork) {
    const TrackFolder folder;
    FakeMedia media;
    media.sourcePath = folder.track().wstring();
    media.unreadable = {L"WM/WMCollectionID"};
    addPicture(media.sourcePath, someImage(100));
    const Bytes before = contentOf(media.sourcePath);
    const juce::String image = textOf(folder.file(L"folder.jpg", someImage(10)));

    WmpMediaItem item;
    ASSERT_TRUE(item.Load(&media));
    item.addCoverArtCount(TrackSource(&media));
    juce::StringPairArray metadata;
    item.getMetadata(metadata);
    EXPECT_EQ(metadata["AlbumArt"], juce::String("0"));
    EXPECT_EQ(
        WmpMediaItem::retrieveTrackCoverArt(TrackSource(&media), textOf(folder.path(L"out.jpg"))),
        WmpMediaItem::Retrieved::noneThere);
    EXPECT_FALSE(WmpMediaItem::setAlbumCoverArt(TrackSource(&media), image));
    juce::String found;
    EXPECT_TRUE(WmpMediaItem::findCoverArtFile(TrackSource(&media), found));
    EXPECT_EQ(found, image);
    EXPECT_EQ(contentOf(media.sourcePath), before);
}

}  // namespace
}  // namespace orvane
