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
std::string Text(const char (&field)[N]) { return std::string(field, strnlen(field, N)); }

bool AllZero(const DxStationRecord &record)
{
    DxStationRecord zero{};
    return memcmp(&record, &zero, sizeof record) == 0;
}

class DxStationListTest : public testing::Test {
protected:
    void TearDown() override { remove(path.c_str()); }

    // Writes the bytes exactly as given (binary, so CR LF stays CR LF), then reads them.
    uint32_t Read(const std::string &bytes)
    {
        remove(path.c_str());
        FILE *file = fopen(path.c_str(), "wb");
        if (!file)
            return 1;
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
        return ReadDxStations(path.c_str());
    }

    std::string path = testing::TempDir() + "dx_station_list_test_" + std::to_string(getpid()) + ".txt";
};

struct LineCase {
    const char *name;
    std::string bytes;
    int count;
    std::string prefix, grid, location; // of the first record
};
void PrintTo(const LineCase &c, std::ostream *os) { *os << c.name; }

class DxStationLineTest : public DxStationListTest, public testing::WithParamInterface<LineCase> {};

TEST_P(DxStationLineTest, GivesTheExpectedRecords)
{
    const LineCase &c = GetParam();
    ASSERT_EQ(Read(c.bytes), 0u);
    ASSERT_EQ(dxStationCount, c.count);
    if (c.count > 0) {
        const DxStationRecord &r = dxStationRecords[0];
        EXPECT_EQ(Text(r.prefix), c.prefix);
        EXPECT_EQ(Text(r.grid), c.grid);
        EXPECT_EQ(Text(r.location), c.location);
        EXPECT_TRUE(r.latitude == 0 && r.longitude == 0) << "a full field spilled into the position";
    }
    EXPECT_TRUE(AllZero(dxStationRecords[c.count])) << "written past the last record";
}

const std::string boston = "Q1ABC,FN42,a,b,c,d,Boston\n";
const std::string L64(64, 'L');

const LineCase lineCases[] = {
    {"Station", "/ c\nQ1ABC,FN42li,4x 17el,1 kW,144/432,Q65,Boston MA\n", 1, "Q1ABC", "FN42li", "Boston MA"},
    {"Heading", ",,,,,,Europe\n", 1, "", "", "Europe"},
    {"CommentsOnly", "/ one\n/ two,FN42,a,b,c,d,x\n/\n", 0, "", "", ""},
    {"EmptyLinesSkipped", "\n\n" + boston + "\n", 1, "Q1ABC", "FN42", "Boston"},
    {"CommentOnlyWhenSlashIsFirst", " /x,FN42,a,b,c,d,y\n", 1, " /x", "FN42", "y"},
    {"EndMarkerFirst", "ZZZZZZ,,,,,,\n" + boston, 0, "", "", ""},
    {"AfterTheEndMarkerIgnored", boston + "ZZZZZZ,JJ00,a,b,c,d,end\n" + boston, 1, "Q1ABC", "FN42", "Boston"},
    {"SevenZsAreAStation", "ZZZZZZZ,FN42,a,b,c,d,x\n", 1, "ZZZZZZZ", "FN42", "x"},
    {"FewerThanSevenFields", "Q1ABC,FN42,a\n", 1, "Q1ABC", "FN42", ""},
    {"LocationEndsAtComma", "Q1ABC,FN42,a,b,c,d,Boston,MA\n", 1, "Q1ABC", "FN42", "Boston"},
    {"NoFinalNewline", "Q1ABC,FN42,a,b,c,d,Boston", 1, "Q1ABC", "FN42", "Boston"},
    {"CrLf", "/ c\r\n\r\nQ1ABC,FN42,a,b,c,d,Boston\r\n", 1, "Q1ABC", "FN42", "Boston"},
    {"NulEndsTheLineText", std::string("Q1\0ABC,FN42,a,b,c,d,Boston\n", 27), 1, "Q1", "", ""},
    {"NulFirstIsAnEmptyLine", std::string("\0Q1ABC,FN42\n", 12) + boston, 1, "Q1ABC", "FN42", "Boston"},
    // A full-width field leaves its comma unread: the next field is empty
    // and the rest shift by one ("FN42", a, b, c are the skipped four).
    {"TwelveCharacterCall", "Q123456789AB,FN42,a,b,c,d,Boston\n", 1, "Q123456789AB", "", "d"},
    {"ThirteenCharacterCall", "Q123456789ABC,FN42,a,b,c,d,Boston\n", 1, "Q123456789AB", "C", "d"},
    {"EightCharacterGrid", "Q1ABC,FN42abcd,a,b,c,d,Boston\n", 1, "Q1ABC", "FN42abcd", "d"},
    {"FullLocation", "Q1ABC,FN42abc,a,b,c,d," + L64 + "\n", 1, "Q1ABC", "FN42abc", L64},
    // 255 characters of a longer line make one record (location cut to 64), the rest another.
    {"LongLineIsTwoRecords", "Q1ABC,FN42,a,b,c,d," + std::string(280, 'L') + "\n" + boston, 3, "Q1ABC", "FN42", L64},
};
INSTANTIATE_TEST_SUITE_P(Rules, DxStationLineTest, testing::ValuesIn(lineCases),
                         [](const testing::TestParamInfo<LineCase> &info) { return info.param.name; });

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
}

// Random and mutated files: no crash or write outside the records (see the
// sanitizer build), the field rules hold, and each read clears what the last left.
TEST_F(DxStationListTest, SurvivesRandomAndMutatedFiles)
{
    std::mt19937 random(20250228);
    auto below = [&](size_t n) { return (size_t)(random() % n); };
    const std::string alphabet = std::string("ZZZZZZ,,,,//\n\n\r\0aQ1FN42lx ", 27) + "\xff\x80";
    auto pick = [&] { return alphabet[below(alphabet.size())]; };
    const std::string sample = ",,,,,,Europe\n/ c\nQ1ABC,FN42li,4x 17el,1 kW,144,Q65,Boston MA\r\n"
                               "QA2XYZ,JO62,,,,,Berlin\nZZZZZZ,,,,,,end\nQ3,AA00,a,b,c,d,after\n";
    for (int round = 0; round < 3000; ++round) {
        std::string bytes = round % 3 == 1 ? sample : "";
        if (round % 3 == 0) // bytes drawn mostly from the characters that matter
            for (size_t n = below(3000); n > 0; --n)
                bytes += below(4) ? pick() : (char)random();
        else if (round % 3 == 1) // a good list with flipped, inserted and deleted bytes
            for (size_t n = 1 + below(20); n > 0; --n) {
                size_t at = below(bytes.size() + 1), how = below(3);
                if (how == 0 && at < bytes.size())
                    bytes[at] = (char)random();
                else if (how == 1)
                    bytes.insert(at, std::string(below(300), pick()));
                else if (how == 2)
                    bytes.erase(at, below(40));
            }
        else // many short lines, up to the full list
            for (size_t n = below(5000); n > 0; --n)
                bytes += (below(2) ? "Q" + std::to_string(n) + ",FN42,a,b,c,d,x" : std::string(below(20), pick()))
                         + "\n";
        ASSERT_EQ(Read(bytes), 0u) << "round " << round;
        ASSERT_TRUE(dxStationCount >= 0 && dxStationCount <= DxStationCapacity);
        for (int i = 0; i < dxStationCount; ++i) {
            const DxStationRecord &r = dxStationRecords[i];
            for (const std::string &field : {Text(r.prefix), Text(r.grid), Text(r.location)})
                ASSERT_EQ(field.find_first_of(",\n"), std::string::npos) << "round " << round;
            ASSERT_EQ(r.latitude, 0.0);
        }
        ASSERT_TRUE(dxStationCount == DxStationCapacity || AllZero(dxStationRecords[dxStationCount]))
            << "round " << round;
    }
}

} // namespace
} // namespace lunaquill
