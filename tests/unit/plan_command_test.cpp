// lunaquill-plan on good and bad arguments: in process (every refusal: status 2, one line on
// stderr naming the argument, nothing on stdout) and the installed-to-be program itself.
#include "tracking/PlanText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

using namespace lunaquill;

namespace {

constexpr int64_t kJune1 = 1748736000; // 2025-06-01 00:00 UTC

struct Outcome { int status; std::string out, err; };

std::string ReadAll(FILE *f)
{
    std::string text;
    rewind(f);
    for (int c = fgetc(f); c != EOF; c = fgetc(f))
        text += char(c);
    fclose(f);
    return text;
}

// As run from FN42mm's centre at 2025-06-01 00:00 UTC.
Outcome Plan(const std::vector<std::string> &args)
{
    std::vector<const char *> argv{"lunaquill-plan"};
    for (const std::string &a : args)
        argv.push_back(a.c_str());
    const PlanDefaults defaults{true, 42.520833, -70.958333, 1296.0, kJune1, "9.99", "FN42mm"};
    FILE *out = tmpfile(), *err = tmpfile();
    return {RunPlanCommand(int(argv.size()), argv.data(), defaults, out, err), ReadAll(out),
            ReadAll(err)};
}

std::vector<std::string> Lines(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

bool Has(const std::string &text, const char *part) { return text.find(part) != std::string::npos; }

void ExpectRefused(const Outcome &run, const std::string &named)
{
    EXPECT_TRUE(run.status == 2 && run.out.empty() && run.err.size() < 200) << run.status;
    EXPECT_TRUE(Lines(run.err).size() == 1 && Has(run.err, named.c_str())) << run.err << run.out;
}

} // namespace

// Each refusal names the last option given (up to an '=') or else the word itself.
TEST(PlanCommand, RefusesBadInputWithOneLineNamingIt)
{
    const std::string huge(5000, 'A');
    const std::vector<std::string> rows[] = {
        {"--bogus"}, {"FN42mm"}, {"--home", "ZZ99"}, {"--home", "FN42m"}, {"--dx", "FN42mmaa"},
        {"--home", "91,10"}, {"--home", "-90.5,0"}, {"--dx", "45,181"}, {"--dx", "nan,0"},
        {"--days", "0"}, {"--days", "367"}, {"--days", "-3"}, {"--days", "3.5"}, {"--days"},
        {"--from", "2025-02-29T00:00Z"}, {"--from", "2025-06-01T24:00Z"},
        {"--from", "2025-06-01 12:00"}, {"--from", "2025-6-1T12:00Z"},
        {"--min-elevation", "NaN"}, {"--min-elevation", "-2.5"}, {"--dx-min-elevation", "91"},
        {"--frequency", "-144"}, {"--frequency", "0"}, {"--frequency", "inf"},
        {"--frequency", "144MHz"}, {"--csv=yes"}, {"--home", huge}, {huge},
        {"--dx", "JO62qm", "--days", "3", "--frequency", "nan"}};
    for (const std::vector<std::string> &args : rows) {
        std::string named = args.front().substr(0, 4);
        for (const std::string &a : args)
            if (a.rfind("--", 0) == 0)
                named = a.substr(0, a.find('='));
        SCOPED_TRACE(args.front().substr(0, 20) + " " + named);
        ExpectRefused(Plan(args), named);
    }
}

// CSV: times as YYYY-MM-DDTHH:MMZ, minutes as they differ, row for row the core's plan; a row
// a date. Tables: FN42mm-JO62qm opens 06-01 14:54; June 1-2 the Moon stays up at the North Pole.
TEST(PlanCommand, CsvTablesHelpAndVersion)
{
    Outcome run = Plan({"--dx=JO62qm", "--days", "3", "--csv", "--from", "2025-06-01T00:00Z"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<std::string> lines = Lines(run.out);
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0].rfind("start_utc,end_utc,minutes,", 0), 0u) << lines[0];
    for (size_t i = 1; i < lines.size(); ++i) {
        int y, mo, d, h, mi, y2, mo2, d2, h2, mi2, minutes;
        ASSERT_EQ(sscanf(lines[i].c_str(), "%4d-%2d-%2dT%2d:%2dZ,%4d-%2d-%2dT%2d:%2dZ,%d", &y, &mo,
                         &d, &h, &mi, &y2, &mo2, &d2, &h2, &mi2, &minutes), 11) << lines[i];
        EXPECT_EQ(minutes, ((d2 - d) * 24 + h2 - h) * 60 + mi2 - mi) << lines[i];
    }
    const PlanRequest r{{42.520833, -70.958333, 0}, {52.520833, 13.375, 0}, true, 1296, kJune1, 3};
    EXPECT_EQ(run.out, WindowsCsv(PlanMutualWindows(r), true));
    lines = Lines(Plan({"--conditions", "--csv", "--days", "30", "--frequency", "144"}).out);
    ASSERT_EQ(lines.size(), 31u);
    EXPECT_EQ(lines[0].rfind("date,transit_utc,elevation_deg,declination_deg,distance_km,", 0), 0u);
    EXPECT_EQ(lines[1].rfind("2025-06-01,2025-06-01T", 0), 0u) << lines[1];
    EXPECT_EQ(lines[30].rfind("2025-06-30,2025-06-30T", 0), 0u) << lines[30];
    run = Plan({"--dx", "JO62qm", "--days", "3"});
    EXPECT_TRUE(Has(run.out, "with JO62qm") && Has(run.out, "\n2025-06-01 14:54")) << run.out;
    EXPECT_TRUE(Has(Plan({"--home", "-89.9,0", "--min-elevation", "5", "--days", "2"}).out,
                    "; 0 windows"));
    run = Plan({"--home", "89.9,0", "--min-elevation", "5", "--days", "2"});
    EXPECT_TRUE(Has(run.out, "; 1 window\n")) << run.out;
    EXPECT_TRUE(Has(run.out, "\n2025-06-01 00:00  2025-06-03 00:00  2880"));
    EXPECT_TRUE(Has(Plan({"--help"}).out, "--dx-min-elevation"));
    EXPECT_EQ(Plan({"--version"}).out, "lunaquill-plan 9.99\n");
}

#ifdef LUNAQUILL_PLAN
// The program itself, in an empty HOME (no settings file: the default home station).
TEST(PlanCommand, TheProgram)
{
    char home[] = "/tmp/plan-home-XXXXXX";
    ASSERT_NE(mkdtemp(home), nullptr);
    const std::string folder = home;
    auto run = [&](const std::string &args) {
        const int status = std::system(("HOME=" + folder + " " LUNAQUILL_PLAN " " + args + " >" +
                                        folder + "/out 2>" + folder + "/err").c_str());
        return Outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                       ReadAll(fopen((folder + "/out").c_str(), "r")),
                       ReadAll(fopen((folder + "/err").c_str(), "r"))};
    };
    EXPECT_TRUE(Has(run("--home FN42mm --dx JO62qm --days 3").out, "Moon windows for FN42mm"));
    EXPECT_EQ(run("--days 1 --csv").out.rfind("start_utc,end_utc,minutes,", 0), 0u);
    for (const std::string &bad : {std::string("--days 0"), std::string("--frequency NaN"),
                                   "--home " + std::string(5000, '9'), std::string(5000, '-')})
        ExpectRefused(run(bad), bad.substr(0, 2));
    EXPECT_EQ(std::system(("rm -rf " + folder).c_str()), 0);
}
#endif
