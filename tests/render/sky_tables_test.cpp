// The built-in sky tables against facts from outside them: the IAU
// constellation areas and boundaries, and where well-known stars and
// deep-sky objects are listed.
#include "render/SkyTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

using namespace lunaquill;

namespace {

int Index(const char *abbreviation)
{
    for (int c = 0; c < kConstellationCount; ++c)
        if (strcmp(kConstellations[c].abbreviation, abbreviation) == 0)
            return c;
    return -1;
}

TEST(SkyTables, ConstellationsCoverTheSkyInAlphabeticalOrder)
{
    // The areas cover the sphere: 4 pi sr = 129600 / pi square degrees. Hydra is the largest
    // constellation and Crux the smallest (IAU); "Antila" is the table's own spelling, kept.
    double sum = 0;
    std::set<int64_t> ranks;
    for (int c = 0; c < kConstellationCount; ++c) {
        const char *abbreviation = kConstellations[c].abbreviation;
        sum += kConstellations[c].area;
        ranks.insert(kConstellations[c].rank);
        EXPECT_TRUE(c == 0 || strcmp(kConstellations[c - 1].abbreviation, abbreviation) < 0);
        EXPECT_STREQ(kConstellationOutlines[c]->abbreviation, abbreviation);
        EXPECT_STREQ(kCatalogue[c]->abbreviation, abbreviation);
    }
    EXPECT_NEAR(sum, 41252.96, 0.01);
    EXPECT_TRUE(ranks.size() == 88 && *ranks.begin() == 1 && *ranks.rbegin() == 88);
    EXPECT_EQ(kConstellations[Index("HYA")].rank, 1);
    EXPECT_EQ(kConstellations[Index("CRU")].rank, 88);
    EXPECT_STREQ(kConstellations[Index("ANT")].name, "Antila");
}

TEST(SkyTables, OutlinesAreTheIauBoundaries)
{
    // The 1930 boundaries run along B1875 hour circles and parallels, at whole seconds of
    // time and whole arcminutes. Serpens is two loops, Caput (14 vertices) then Cauda.
    int total = 0;
    for (int c = 0; c < kConstellationCount; ++c) {
        const ConstellationOutline &outline = *kConstellationOutlines[c];
        const int split = strcmp(outline.abbreviation, "SER") == 0 ? 14 : outline.count;
        total += outline.count;
        for (int i = 0; i < outline.count; ++i) {
            const int first = i < split ? 0 : split, end = i < split ? split : outline.count;
            const OutlinePoint &p = outline.points[i];
            const OutlinePoint &q = outline.points[i + 1 < end ? i + 1 : first];
            EXPECT_TRUE(p.rightAscension == q.rightAscension || p.declination == q.declination)
                << outline.abbreviation << " vertex " << i;
            EXPECT_NEAR(p.rightAscension * 3600, std::round(p.rightAscension * 3600), 1e-6);
            EXPECT_NEAR(p.declination * 60, std::round(p.declination * 60), 1e-9);
        }
    }
    EXPECT_EQ(total, 1542);
}

TEST(SkyTables, KnownObjectsInTheirConstellations)
{
    int total = 0;
    for (const ObjectList *list : kCatalogue)
        total += list->count;
    EXPECT_EQ(total, 11422);

    // HD numbers for stars, NGC n, IC as 10000 + n, Messier-only as 20000 + m.
    const struct { const char *constellation; int32_t number, type; double magnitude; } known[] = {
        {"AND", 358, 3, 2.06},     // Alpheratz, a variable
        {"UMI", 8890, 3, 2.0},     // Polaris
        {"CMA", 48915, 1, -1.44},  // Sirius
        {"AND", 224, 0, 4.36},     // M31, a galaxy
        {"HER", 6205, 9, 5.8},     // M13, a globular cluster
        {"TAU", 1952, 11, 8.4},    // M1, the Crab Nebula
        {"TAU", 20045, 7, 1.6},    // M45, the Pleiades
    };
    for (const auto &k : known) {
        const ObjectList &list = *kCatalogue[Index(k.constellation)];
        auto same = [&](const CatalogueObject &o) {
            return o.number == k.number && o.type == k.type
                   && std::fabs(o.magnitude - k.magnitude) < 0.005;
        };
        EXPECT_EQ(std::count_if(list.objects, list.objects + list.count, same), 1)
            << k.constellation << " " << k.number;
    }
}

} // namespace
