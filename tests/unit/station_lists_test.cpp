// The readers of the DX station list and of the band and favourites lists:
// one line format with a few rules of each list's own. Any byte sequence is
// the station list fuzz targets' (their corpora run in CTest).
#include "tracking/DxStationList.h"
#include "tracking/FavoriteList.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
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
    Record zero{};
    return memcmp(&record, &zero, sizeof record) == 0;
}

// A station as "call|grid|location".
std::string First(const DxStationRecord &r)
{
    return Text(r.prefix) + "|" + Text(r.grid) + "|" + Text(r.location);
}
std::string First(const FavoriteEntry &e)
{
    return Text(e.callsign) + "|" + Text(e.grid) + "|" + Text(e.location);
}

class StationListTest : public testing::Test {
protected:
    void TearDown() override { remove(path.c_str()); }

    // Writes the bytes exactly as given (binary, so CR LF stays CR LF), then reads them with
    // both readers. A new file each time: rewriting a truncated one waits for the disk.
    void Read(const std::string &bytes)
    {
        remove(path.c_str());
        FILE *file = fopen(path.c_str(), "wb");
        ASSERT_TRUE(file);
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
        ASSERT_EQ(ReadDxStations(path.c_str()), 0u);
        ASSERT_EQ(ReadFavoriteList(path.c_str(), *favourites), 0);
    }

    std::string path = testing::TempDir() + "station_lists_" + std::to_string(getpid()) + ".txt";
    std::unique_ptr<FavoriteList> favourites = std::make_unique<FavoriteList>();
};

struct Expected {
    int count = -1;      // -1: the band list reads it as the DX list does
    std::string first;   // "call|grid|location" of the first record
};
struct LineCase {
    const char *name;
    std::string bytes;
    Expected dx, favourites = {};
};

const std::string boston = "Q1ABC,FN42,a,b,c,d,Boston\n";
const std::string L64(64, 'L');
const Expected one = {1, "Q1ABC|FN42|Boston"};
// 254 characters, then CR LF: 255 with the LF, so one line, not two pieces.
const std::string line254 = "Q1ABC,FN42," + std::string(230, 'a') + ",b,c,d,Boston";

const LineCase lineCases[] = {
    {"Station", "/ c\nQ1ABC,FN42li,4x 17el,1 kW,144,Q65,Boston\n", {1, "Q1ABC|FN42li|Boston"}},
    // A line that is only a newline: skipped in the DX list, a station with
    // the newline for its call in a band list.
    {"NewlineOnlyLines", "\n\n" + boston + "\n", one, {4, "\n||"}},
    // In a band list the call keeps the newline, so this is no end marker.
    {"EndMarkerWithoutComma", "ZZZZZZ\n" + boston, {0, ""}, {2, "ZZZZZZ\n||"}},
    {"CallAndGridOnly", "Q1ABC,FN42\n", {1, "Q1ABC|FN42|"}, {1, "Q1ABC|FN42\n|"}},
    {"CrLf", "/ c\r\nQ1ABC,FN42,a,b,c,d,Boston\r\n", one},
    {"CrLfAfter254Characters", line254 + "\r\n" + line254 + "\r\n", {2, "Q1ABC|FN42|Boston"}},
    {"NotText", "Q\xe9\xff,FN42,\x01,\x7f,c,d,Z\xfcrich\n", {1, "Q\xe9\xff|FN42|Z\xfcrich"}},
    {"NulEndsTheLineText", std::string("Q1\0ABC,FN42,a,b,c,d,Boston\n", 27), {1, "Q1||"}},
    {"NulFirstIsAnEmptyLine", std::string("\0Q1ABC,FN42\n", 12) + boston, one},
    // A full-width field leaves its comma unread: the next field is empty
    // and the rest shift by one ("FN42", a, b, c are the skipped four).
    {"TwelveCharacterCall", "Q123456789AB,FN42,a,b,c,d,Boston\n", {1, "Q123456789AB||d"}},
    {"ThirteenCharacterCall", "Q123456789ABC,FN42,a,b,c,d,Boston\n", {1, "Q123456789AB|C|d"}},
    {"EightCharacterGrid", "Q1ABC,FN42abcd,a,b,c,d,Boston\n", {1, "Q1ABC|FN42abcd|d"}},
    {"FullLocation", "Q1ABC,FN42abc,a,b,c,d," + L64 + "\n", {1, "Q1ABC|FN42abc|" + L64}},
    // 255 characters of a longer line make one record (location cut to 64);
    // the DX list reads the rest as another, a band list drops it.
    {"LongLine", "Q1ABC,FN42,a,b,c,d," + std::string(280, 'L') + "\n" + boston,
     {3, "Q1ABC|FN42|" + L64}, {2, "Q1ABC|FN42|" + L64}},
};

TEST_F(StationListTest, LinesGiveTheExpectedRecords)
{
    for (const LineCase &c : lineCases) {
        SCOPED_TRACE(c.name);
        Read(c.bytes);
        const Expected &fav = c.favourites.count < 0 ? c.dx : c.favourites;
        ASSERT_EQ(dxStationCount, c.dx.count) << "DX list";
        ASSERT_EQ(favourites->count, fav.count) << "band list";
        EXPECT_EQ(First(dxStationRecords[0]), c.dx.count ? c.dx.first : "||");
        EXPECT_EQ(First(favourites->entries[0]), fav.count ? fav.first : "||");
        // A full field spills into neither the position nor the next record.
        EXPECT_TRUE(dxStationRecords[0].latitude == 0 && favourites->entries[0].latitude == 0);
        EXPECT_TRUE(AllZero(dxStationRecords[c.dx.count])) << "written past the last DX record";
        EXPECT_TRUE(AllZero(favourites->entries[fav.count])) << "written past the last entry";
    }
}

TEST_F(StationListTest, CapacityAndMissingFiles)
{
    std::string bytes;
    for (int i = 1; i <= 1001; ++i)
        bytes += "Q" + std::to_string(i) + ",FN42,a,b,c,d,x\n";
    Read(bytes);
    EXPECT_EQ(dxStationCount, 1000);
    EXPECT_EQ(Text(dxStationRecords[999].prefix), "Q1000");
    EXPECT_EQ(favourites->count, 500);
    EXPECT_EQ(Text(favourites->entries[499].callsign), "Q500");
    // A missing file counts nothing.
    EXPECT_EQ(ReadDxStations((path + ".missing").c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(dxStationCount, 0);
    EXPECT_EQ(ReadFavoriteList((path + ".missing").c_str(), *favourites), -1);
    EXPECT_EQ(favourites->count, 0);
    EXPECT_TRUE(AllZero(favourites->entries[0]));
}

} // namespace
} // namespace lunaquill
