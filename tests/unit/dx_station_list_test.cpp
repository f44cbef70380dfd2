// The DX station list reader: the line and field rules, and that no byte
// sequence makes it write outside its records.
#include "tracking/DxStationList.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>

#include <unistd.h>

namespace lunaquill {
namespace {

// A record field as text, never read past its width.
template <size_t N>
std::string Text(const char (&field)[N])
{
    return std::string(field, strnlen(field, N));
}

bool AllZero(const DxStationRecord &record)
{
    DxStationRecord zero{};
    return memcmp(&record, &zero, sizeof record) == 0;
}

class DxStationListTest : public testing::Test {
protected:
    void SetUp() override
    {
        memset(dxStationRecords, 0, sizeof dxStationRecords);
        dxStationCount = 0;
        path = testing::TempDir() + "dx_station_list_test_" + std::to_string(getpid()) + ".txt";
    }
    void TearDown() override { remove(path.c_str()); }

    // Writes the bytes exactly as given (binary, so CR LF stays CR LF).
    // (Removed first: rewriting a file in place can make the file system
    // flush it to disk on every round of the random test.)
    uint32_t Read(const std::string &bytes)
    {
        remove(path.c_str());
        FILE *file = fopen(path.c_str(), "wb");
        EXPECT_NE(file, nullptr);
        if (!file)
            return 1;
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
        return ReadDxStations(path.c_str());
    }

    std::string path;
};

TEST_F(DxStationListTest, ReadsCallGridAndLocationAndSkipsTheFourFieldsBetween)
{
    ASSERT_EQ(Read("/ comment\n"
                   ",,,,,,North America\n"
                   "Q1ABC,FN42li,4x 17el,1 kW,144/432,Q65,Boston MA\n"
                   "QA2XYZ,JO62,,,,,Berlin\n"),
              0u);
    ASSERT_EQ(dxStationCount, 3);
    EXPECT_EQ(Text(dxStationRecords[0].prefix), "");
    EXPECT_EQ(Text(dxStationRecords[0].location), "North America");
    EXPECT_EQ(Text(dxStationRecords[1].prefix), "Q1ABC");
    EXPECT_EQ(Text(dxStationRecords[1].grid), "FN42li");
    EXPECT_EQ(Text(dxStationRecords[1].location), "Boston MA");
    EXPECT_EQ(Text(dxStationRecords[2].prefix), "QA2XYZ");
    EXPECT_EQ(Text(dxStationRecords[2].grid), "JO62");
    EXPECT_EQ(Text(dxStationRecords[2].location), "Berlin");
    // Positions are the dialog's job: the reader leaves them zero.
    EXPECT_EQ(dxStationRecords[1].latitude, 0.0);
    EXPECT_EQ(dxStationRecords[1].longitude, 0.0);
}

struct LineCase {
    const char *name;
    std::string bytes;
    int count;
    // Fields of the first record (when count > 0).
    std::string prefix;
    std::string grid;
    std::string location;
};

void PrintTo(const LineCase &c, std::ostream *os)
{
    *os << c.name;
}

class DxStationLineTest : public DxStationListTest,
                          public testing::WithParamInterface<LineCase> {};

TEST_P(DxStationLineTest, GivesTheExpectedRecords)
{
    const LineCase &c = GetParam();
    ASSERT_EQ(Read(c.bytes), 0u);
    ASSERT_EQ(dxStationCount, c.count);
    if (c.count > 0) {
        EXPECT_EQ(Text(dxStationRecords[0].prefix), c.prefix);
        EXPECT_EQ(Text(dxStationRecords[0].grid), c.grid);
        EXPECT_EQ(Text(dxStationRecords[0].location), c.location);
    }
    // Nothing is written past the last counted record.
    for (int i = c.count; i < c.count + 3; ++i)
        EXPECT_TRUE(AllZero(dxStationRecords[i])) << "record " << i;
}

const std::string boston = "Q1ABC,FN42,a,b,c,d,Boston\n";

INSTANTIATE_TEST_SUITE_P(
    Rules, DxStationLineTest,
    testing::Values(
        LineCase{"CommentsOnly", "/ one\n/ two,FN42,a,b,c,d,x\n/\n", 0, "", "", ""},
        LineCase{"EmptyFile", "", 0, "", "", ""},
        LineCase{"EmptyLinesSkipped", "\n\n" + boston + "\n", 1, "Q1ABC", "FN42", "Boston"},
        LineCase{"CommentOnlyWhenSlashIsFirst", " /x,FN42,a,b,c,d,y\n", 1, " /x", "FN42", "y"},
        LineCase{"EndMarkerFirst", "ZZZZZZ,,,,,,\n" + boston, 0, "", "", ""},
        LineCase{"EndMarkerAloneOnItsLine", "ZZZZZZ\n" + boston, 0, "", "", ""},
        LineCase{"EndMarkerLastLineWithoutNewline", boston + "ZZZZZZ", 1, "Q1ABC", "FN42", "Boston"},
        LineCase{"EverythingAfterTheEndMarkerIgnored",
                 boston + "ZZZZZZ,JJ00,a,b,c,d,end\nQ2XYZ,FN42,a,b,c,d,x\n", 1, "Q1ABC", "FN42",
                 "Boston"},
        LineCase{"SevenZsAreAStation", "ZZZZZZZ,FN42,a,b,c,d,x\n", 1, "ZZZZZZZ", "FN42", "x"},
        LineCase{"FiveZsAreAStation", "ZZZZZ,FN42,a,b,c,d,x\n", 1, "ZZZZZ", "FN42", "x"},
        LineCase{"FewerThanSevenFields", "Q1ABC,FN42,a\n", 1, "Q1ABC", "FN42", ""},
        LineCase{"CallOnly", "Q1ABC\n", 1, "Q1ABC", "", ""},
        LineCase{"Heading", ",,,,,,Europe\n", 1, "", "", "Europe"},
        LineCase{"LocationEndsAtComma", "Q1ABC,FN42,a,b,c,d,Boston,MA\n", 1, "Q1ABC", "FN42", "Boston"},
        LineCase{"MissingFinalNewline", "Q1ABC,FN42,a,b,c,d,Boston", 1, "Q1ABC", "FN42", "Boston"},
        LineCase{"CrLf", "/ c\r\n\r\nQ1ABC,FN42,a,b,c,d,Boston\r\n", 1, "Q1ABC", "FN42", "Boston"},
        LineCase{"CrLfShortLine", "Q1ABC,FN42\r\n", 1, "Q1ABC", "FN42", ""},
        LineCase{"NulEndsTheLineText", std::string("Q1\0ABC,FN42,a,b,c,d,Boston\n", 27), 1, "Q1", "", ""},
        LineCase{"NulFirstIsAnEmptyLine", std::string("\0Q1ABC,FN42\n", 12) + boston, 1, "Q1ABC",
                 "FN42", "Boston"},
        LineCase{"ElevenCharacterCall", "Q123456789A,FN42,a,b,c,d,Boston\n", 1, "Q123456789A", "FN42",
                 "Boston"},
        // A full-width field leaves its comma unread, so the next field is
        // empty and the rest shift by one: "FN42" and a, b, c are skipped.
        LineCase{"TwelveCharacterCall", "Q123456789AB,FN42,a,b,c,d,Boston\n", 1, "Q123456789AB", "", "d"},
        // Past 12 the call goes on into the grid.
        LineCase{"ThirteenCharacterCall", "Q123456789ABC,FN42,a,b,c,d,Boston\n", 1, "Q123456789AB",
                 "C", "d"},
        LineCase{"SevenCharacterGrid", "Q1ABC,FN42abc,a,b,c,d,Boston\n", 1, "Q1ABC", "FN42abc", "Boston"},
        // The comma after a full grid starts the first skipped field.
        LineCase{"EightCharacterGrid", "Q1ABC,FN42abcd,a,b,c,d,Boston\n", 1, "Q1ABC", "FN42abcd", "d"},
        LineCase{"SixtyFourCharacterLocation", "Q1ABC,FN42,a,b,c,d," + std::string(64, 'L') + "\n", 1,
                 "Q1ABC", "FN42", std::string(64, 'L')},
        LineCase{"LongerLocationCut", "Q1ABC,FN42,a,b,c,d," + std::string(100, 'L') + "\n", 1, "Q1ABC",
                 "FN42", std::string(64, 'L')}),
    [](const testing::TestParamInfo<LineCase> &info) { return info.param.name; });

TEST_F(DxStationListTest, FullWidthFieldsDoNotSpillIntoTheirNeighbours)
{
    ASSERT_EQ(Read("Q123456789AB,FN42abcd,a,b,c,d," + std::string(64, 'L') + "\n"), 0u);
    const DxStationRecord &record = dxStationRecords[0];
    EXPECT_EQ(std::string(record.prefix, 12), "Q123456789AB");
    EXPECT_EQ(record.grid[0], '\0');
    EXPECT_EQ(record.latitude, 0.0);
    EXPECT_EQ(record.longitude, 0.0);
}

TEST_F(DxStationListTest, ALineLongerThan255CharactersIsReadAsTwoRecords)
{
    // 19 characters of fields, then 280 of location: the first 255
    // characters make one record, the other 44 (and the LF) a second.
    std::string line = "Q1ABC,FN42,a,b,c,d," + std::string(280, 'x') + "\n";
    ASSERT_EQ(Read(line + boston), 0u);
    ASSERT_EQ(dxStationCount, 3);
    EXPECT_EQ(Text(dxStationRecords[0].location), std::string(64, 'x'));
    EXPECT_EQ(Text(dxStationRecords[1].prefix), std::string(12, 'x'));
    EXPECT_EQ(Text(dxStationRecords[1].grid), std::string(8, 'x'));
    EXPECT_EQ(Text(dxStationRecords[1].location), "");
    EXPECT_EQ(Text(dxStationRecords[2].location), "Boston");
}

TEST_F(DxStationListTest, ATenThousandCharacterLineGivesOneRecordPer255Characters)
{
    // 10000 = 39 * 255 + 55: 39 full pieces and one of 55 characters + LF.
    ASSERT_EQ(Read(std::string(10000, 'a') + "\n" + boston), 0u);
    ASSERT_EQ(dxStationCount, 41);
    EXPECT_EQ(Text(dxStationRecords[39].prefix), std::string(12, 'a'));
    EXPECT_EQ(Text(dxStationRecords[40].prefix), "Q1ABC");
}

TEST_F(DxStationListTest, StopsAfterOneThousandStations)
{
    std::string bytes = ",,,,,,Heading\n";
    for (int i = 1; i <= 5000; ++i)
        bytes += "Q" + std::to_string(i) + ",FN42,a,b,c,d,Line " + std::to_string(i) + "\n";
    ASSERT_EQ(Read(bytes), 0u);
    ASSERT_EQ(dxStationCount, 1000);
    // The heading is record 0, so the last one read is station 999.
    EXPECT_EQ(Text(dxStationRecords[999].prefix), "Q999");
    EXPECT_EQ(Text(dxStationRecords[999].location), "Line 999");
}

TEST_F(DxStationListTest, TheThousandAndFirstLineIsNotRead)
{
    std::string bytes;
    for (int i = 1; i <= 1001; ++i)
        bytes += "Q" + std::to_string(i) + ",FN42,a,b,c,d,x\n";
    ASSERT_EQ(Read(bytes), 0u);
    EXPECT_EQ(dxStationCount, 1000);
    EXPECT_EQ(Text(dxStationRecords[999].prefix), "Q1000");
}

TEST_F(DxStationListTest, AMissingFileReturnsAllBitsSetAndCountsNothing)
{
    ASSERT_EQ(Read(boston + boston), 0u);
    ASSERT_EQ(dxStationCount, 2);
    EXPECT_EQ(ReadDxStations((path + ".missing").c_str()), 0xFFFFFFFFu);
    EXPECT_EQ(dxStationCount, 0);
    EXPECT_EQ(ReadDxStations(nullptr), 0xFFFFFFFFu);
}

TEST_F(DxStationListTest, RecordsAreClearedBeforeEachRead)
{
    memset(dxStationRecords, 'q', sizeof dxStationRecords);
    ASSERT_EQ(Read("Q1ABC,FN42,a,b,c,d,A long location text\n"), 0u);
    ASSERT_EQ(Read("Q2,JO62,a,b,c,d,B\n"), 0u);
    ASSERT_EQ(dxStationCount, 1);
    EXPECT_EQ(Text(dxStationRecords[0].location), "B");
    EXPECT_TRUE(AllZero(dxStationRecords[1]));
    EXPECT_TRUE(AllZero(dxStationRecords[DxStationCapacity - 1]));
}

// Random and mutated files: the reader must never crash or write outside
// its records (run this under the sanitizer build), and what it stores must
// follow the field rules.
TEST_F(DxStationListTest, SurvivesRandomAndMutatedFiles)
{
    std::mt19937 random(20250228);
    auto below = [&](size_t n) { return (size_t)(random() % n); };
    const std::string alphabet = std::string("ZZZZZZ,,,,//\n\n\r\0aQ1FN42lx ", 27) + "\xff\x80";
    const std::string sample = ",,,,,,Europe\n/ comment\nQ1ABC,FN42li,4x 17el,1 kW,144,Q65,Boston MA\r\n"
                               "QA2XYZ,JO62,,,,,Berlin\nZZZZZZ,,,,,,end\nQ3,AA00,a,b,c,d,after\n";

    for (int round = 0; round < 3000; ++round) {
        std::string bytes;
        switch (round % 3) {
        case 0: // bytes drawn mostly from the characters that matter
            for (size_t n = below(3000); n > 0; --n)
                bytes += below(4) ? alphabet[below(alphabet.size())] : (char)random();
            break;
        case 1: { // a good list with flipped, inserted and deleted bytes
            bytes = sample;
            for (size_t n = 1 + below(20); n > 0; --n) {
                size_t at = below(bytes.size() + 1);
                switch (below(3)) {
                case 0: if (at < bytes.size()) bytes[at] = (char)random(); break;
                case 1: bytes.insert(at, std::string(below(300), alphabet[below(alphabet.size())])); break;
                case 2: bytes.erase(at, below(40)); break;
                }
            }
            break;
        }
        case 2: // many short lines, some of them stations
            for (size_t n = below(5000); n > 0; --n)
                bytes += below(2) ? "Q" + std::to_string(n) + ",FN42,a,b,c,d,x\n"
                                  : std::string(below(20), alphabet[below(alphabet.size())]) + "\n";
            break;
        }
        ASSERT_EQ(Read(bytes), 0u) << "round " << round;
        ASSERT_GE(dxStationCount, 0);
        ASSERT_LE(dxStationCount, DxStationCapacity);
        for (int i = 0; i < dxStationCount; ++i) {
            const DxStationRecord &r = dxStationRecords[i];
            for (const std::string &field : {Text(r.prefix), Text(r.grid), Text(r.location)})
                ASSERT_EQ(field.find_first_of(",\n"), std::string::npos) << "round " << round;
            ASSERT_EQ(r.latitude, 0.0);
        }
        if (dxStationCount < DxStationCapacity) {
            ASSERT_TRUE(AllZero(dxStationRecords[dxStationCount])) << "round " << round;
        }
    }
}

} // namespace
} // namespace lunaquill
