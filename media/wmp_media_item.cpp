#include "media/wmp_media_item.h"

#include <windows.h>

#include <wmp.h>

#include "media/com_text.h"
#include "media/field_table.h"
#include "util/log/log.h"

namespace orvane {
namespace {

// Of several artists or genres getItemInfo gives the first; written back it would replace them all.
bool isFirstOfSeveral(IWMPMedia* media, const CComBSTR& attribute, const juce::String& value) {
    const CComQIPtr<IWMPMedia3> media3(media);
    LONG count = 0;
    CComBSTR first;
    return media3 && SUCCEEDED(media3->getAttributeCountByType(attribute, CComBSTR(L""), &count)) &&
           count > 1 && SUCCEEDED(media->getItemInfo(attribute, &first)) && textOf(first) == value;
}

}  // namespace

WmpMediaItem::WmpMediaItem() : m_record(true) {}

WmpMediaItem::WmpMediaItem(const juce::StringPairArray& metadata) : m_record(true) {
    // Assigned whole: put in one by one, n entries would cost n squared.
    m_record = metadata;
    if (getAlbumArtist().isEmpty()) m_record.set(fields::kAlbumArtist, getTrackArtist());
}

void WmpMediaItem::getMetadata(juce::StringPairArray& out) const { out = m_record; }

juce::String WmpMediaItem::attributeNameFor(const juce::String& field) {
    return fields::attributeFor(field);
}

bool WmpMediaItem::LoadFields(IWMPMedia* media, std::span<const char* const> wanted) {
    if (!media) return false;
    m_record.clear();
    CComBSTR sourcePath;
    if (SUCCEEDED(media->get_sourceURL(&sourcePath)))
        m_record.set(fields::kFilename, textOf(sourcePath));
    for (const char* field : wanted) readField(media, field, {});
    return true;
}

bool WmpMediaItem::Load(IWMPMedia* media) {
    if (!LoadFields(media, fields::kLoaded)) return false;
    const juce::String partOfSet = m_record[fields::kPartOfSet];
    if (partOfSet.isNotEmpty()) {
        const auto [diskNumber, disksInSet] = fields::splitPartOfSet(partOfSet);
        m_record.set(fields::kDiskNumber, diskNumber);
        m_record.set(fields::kDisksInSet, disksInSet);
    }
    return true;
}

void WmpMediaItem::addCoverArtCount(const TrackSource& source) {
    m_record.set(fields::kAlbumArt, juce::String(countCoverArt(source)));
}

bool WmpMediaItem::Save(IWMPMedia* media, bool emptyOk) const {
    if (!media) return false;
    for (const char* field : fields::kSaved) {
        if (!emptyOk && m_record[field].isEmpty()) continue;
        if (!writeField(media, field))
            syslog(LOG_ERR, "%s: error writing %s data.", "WmpMediaItem::Save", field);
    }
    return true;
}

bool WmpMediaItem::readField(IWMPMedia* media, const juce::String& field,
                             const juce::String& defaultValue) {
    if (!media) return false;
    CComBSTR value;
    const bool read = SUCCEEDED(media->getItemInfo(bstrOf(attributeNameFor(field)), &value));
    m_record.set(field, read ? textOf(value) : defaultValue);
    return read;
}

bool WmpMediaItem::writeField(IWMPMedia* media, const juce::String& field) const {
    if (!media) return false;
    juce::String attribute = attributeNameFor(field);
    if (attribute.isEmpty()) return true;

    juce::String value = m_record[field];
    if (field == fields::kDiskNumber) {
        value = value + "/" + m_record[fields::kDisksInSet];
    } else if (field == fields::kYear) {
        attribute = fields::kWrittenYearAttribute;
        value = fields::writtenYear(value);
    }
    const CComBSTR name = bstrOf(attribute);
    if (isFirstOfSeveral(media, name, value)) return true;
    return SUCCEEDED(media->setItemInfo(name, bstrOf(value)));
}

juce::String WmpMediaItem::getTrackTitle() const { return m_record[fields::kTrackTitle]; }
juce::String WmpMediaItem::getTrackArtist() const { return m_record[fields::kTrackArtist]; }
juce::String WmpMediaItem::getAlbumArtist() const { return m_record[fields::kAlbumArtist]; }
juce::String WmpMediaItem::getAlbumTitle() const { return m_record[fields::kAlbumTitle]; }
juce::String WmpMediaItem::getGenre() const { return m_record[fields::kGenre]; }
juce::String WmpMediaItem::getFilename() const { return m_record[fields::kFilename]; }
juce::String WmpMediaItem::getYear() const { return m_record[fields::kYear]; }
juce::String WmpMediaItem::getTrackNumber() const { return m_record[fields::kTrackNumber]; }

}  // namespace orvane
