// The readers of the DX station list and of the band and favourites lists:
// one line format with a few rules of each list's own. Any byte sequence is
// the station list fuzz targets' (their corpora run in CTest).
#include "tracking/DxStationList.h"
#include "tracking/FavoriteList.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>

#include <unistd.h>

namespace lunaquill {
namespace {

// A record field as text, never read past its width.
template <size_t N>
std::string Text(const char (&field)[N]) { return std::string(field, strnlen(field, N)); }

template <typename Record>
bool AllZero(const Record &record)
{
    static const Record zero{};
    return memcmp(&record, &zero, sizeof record) == 0;
}

// A record as "call|grid|location".
template <typename Record>
std::string Fields(const std::string &call, const Record &r)
{
    return call + "|" + Text(r.grid) + "|" + Text(r.location);
}

// Writes the bytes exactly as given (binary, so CR LF stays CR LF) to a new file, as rewriting
// a truncated one waits for the disk, and reads them with both readers.
void Read(const std::string &bytes, FavoriteList &favourites)
{
    const std::string path = testing::TempDir() + "lists_" + std::to_string(getpid()) + ".txt";
    std::ofstream(path, std::ios::binary) << bytes;
    ASSERT_EQ(ReadDxStations(path.c_str()), 0u);
    ASSERT_EQ(ReadFavoriteList(path.c_str(), favourites), 0);
    std::remove(path.c_str());
}

struct LineCase {
    const char *name;
    std::string bytes;
    int dxCount;
    std::string dxFirst; // "call|grid|location" of the first record
    int bandCount = -1;  // -1: the band list reads it as the DX list does
    std::string bandFirst = "";
};

const std::string boston = "Q1ABC,FN42,a,b,c,d,Boston\n", L64(64, 'L');
// 254 characters, then CR LF: 255 with the LF, so one line, not two pieces.
const std::string line254 = "Q1ABC,FN42," + std::string(230, 'a') + ",b,c,d,Boston";

const LineCase lineCases[] = {
    // A line that is only a newline: skipped in the DX list, a station with
    // the newline for its call in a band list.
    {"NewlineOnlyLines", "\n\n" + boston + "\n", 1, "Q1ABC|FN42|Boston", 4, "\n||"},
    // In a band list the call keeps the newline, so this is no end marker.
    {"EndMarkerWithoutComma", "ZZZZZZ\n" + boston, 0, "", 2, "ZZZZZZ\n||"},
    {"CallAndGridOnly", "Q1ABC,FN42\n", 1, "Q1ABC|FN42|", 1, "Q1ABC|FN42\n|"},
    {"CrLf", "/ c\r\nQ1ABC,FN42li,4x 17el,1 kW,144,Q65,Boston\r\n", 1, "Q1ABC|FN42li|Boston"},
    {"CrLfAfter254Characters", line254 + "\r\n" + line254 + "\r\n", 2, "Q1ABC|FN42|Boston"},
    {"NotText", "Q\xe9\xff,FN42,\x01,\x7f,c,d,Z\xfcrich\n", 1, "Q\xe9\xff|FN42|Z\xfcrich"},
    // UTF-8 is kept byte for byte, but a field never ends in part of a
    // character: "\xc3\x84" (A umlaut) that would take bytes 12 and 13 of the
    // call goes to the grid, and the fields shift as for a long call; a
    // location cut at 64 bytes ends before the euro sign ("\xe2\x82\xac") it
    // would cut; a line cut at 255 bytes loses the euro sign it cuts (the DX
    // list reads its last byte as a further line, of Latin-1 text).
    {"Utf8", "Q1\xc3\x84\x42\x43,JO62,a,b,c,d,Z\xc3\xbcrich\n", 1,
     "Q1\xc3\x84\x42\x43|JO62|Z\xc3\xbcrich"},
    {"Utf8CallCutInACharacter", "Q1234567890\xc3\x84,JO62,a,b,c,d,Zurich\n", 1,
     "Q1234567890|\xc3\x84|d"},
    {"Utf8LocationCutInACharacter", "Q1,FN42,a,b,c,d," + std::string(62, 'L') + "\xe2\x82\xacuro\n",
     1, "Q1|FN42|" + std::string(62, 'L')},
    {"Utf8LineCutInACharacter",
     "Q1,FN42,a,b,c," + std::string(231, 'd') + ",Bonn \xe2\x82\xac\xe2\x82\xac\n" + boston, 3,
     "Q1|FN42|Bonn \xe2\x82\xac", 2, "Q1|FN42|Bonn \xe2\x82\xac"},
    {"NulEndsTheLineText", std::string("Q1\0ABC,FN42,a,b,c,d,Boston\n", 27), 1, "Q1||"},
    {"NulFirstIsAnEmptyLine", std::string("\0Q1ABC,FN42\n", 12) + boston, 1, "Q1ABC|FN42|Boston"},
    // A full-width field leaves its comma unread: the next field is empty
    // and the rest shift by one ("FN42", a, b, c are the skipped four).
    {"TwelveCharacterCall", "Q123456789AB,FN42,a,b,c,d,Boston\n", 1, "Q123456789AB||d"},
    {"ThirteenCharacterCall", "Q123456789ABC,FN42,a,b,c,d,Boston\n", 1, "Q123456789AB|C|d"},
    {"EightCharacterGrid", "Q1ABC,FN42abcd,a,b,c,d,Boston\n", 1, "Q1ABC|FN42abcd|d"},
    {"FullLocation", "Q1ABC,FN42abc,a,b,c,d," + L64 + "\n", 1, "Q1ABC|FN42abc|" + L64},
    // 255 characters of a longer line make one record (location cut to 64);
    // the DX list reads the rest as another, a band list drops it.
    {"LongLine", "Q1ABC,FN42,a,b,c,d," + std::string(280, 'L') + "\n" + boston, 3,
     "Q1ABC|FN42|" + L64, 2, "Q1ABC|FN42|" + L64},
};

TEST(StationLists, LinesGiveTheExpectedRecords)
{
    auto favourites = std::make_unique<FavoriteList>();
    for (const LineCase &c : lineCases) {
        SCOPED_TRACE(c.name);
        Read(c.bytes, *favourites);
        const int bandCount = c.bandCount < 0 ? c.dxCount : c.bandCount;
        ASSERT_EQ(dxStationCount, c.dxCount) << "DX list";
        ASSERT_EQ(favourites->count, bandCount) << "band list";
        const DxStationRecord &station = dxStationRecords[0];
        const FavoriteEntry &entry = favourites->entries[0];
        EXPECT_EQ(Fields(Text(station.prefix), station), c.dxCount ? c.dxFirst : "||");
        EXPECT_EQ(Fields(Text(entry.callsign), entry),
                  !bandCount ? "||" : c.bandCount < 0 ? c.dxFirst : c.bandFirst);
        // A full field spills into neither the position nor the next record.
        EXPECT_TRUE(station.latitude == 0 && entry.latitude == 0);
        EXPECT_TRUE(AllZero(dxStationRecords[c.dxCount])) << "written past the last DX record";
        EXPECT_TRUE(AllZero(favourites->entries[bandCount])) << "written past the last entry";
    }
}

TEST(StationLists, CapacityAndMissingFiles)
{
    std::string bytes;
    for (int i = 1; i <= 1001; ++i)
        bytes += "Q" + std::to_string(i) + ",FN42,a,b,c,d,x\n";
    auto favourites = std::make_unique<FavoriteList>();
    Read(bytes, *favourites);
    EXPECT_TRUE(dxStationCount == 1000 && favourites->count == 500);
    EXPECT_EQ(Text(dxStationRecords[999].prefix) + Text(favourites->entries[499].callsign),
              "Q1000Q500");
    // A missing file counts nothing.
    EXPECT_EQ(ReadDxStations("/nonexistent/list.txt"), 0xFFFFFFFFu);
    EXPECT_EQ(ReadFavoriteList("/nonexistent/list.txt", *favourites), -1);
    EXPECT_TRUE(dxStationCount == 0 && favourites->count == 0 && AllZero(favourites->entries[0]));
}

} // namespace
} // namespace lunaquill
