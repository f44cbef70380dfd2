// lunaquill-plan on good and bad arguments: in process (every refusal: status 2, one line on
// stderr naming the argument, nothing on stdout) and the installed-to-be program itself.
#include "tracking/PlanText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace lunaquill;

namespace {

constexpr int64_t kJune1 = 1748736000; // 2025-06-01 00:00 UTC

std::string ReadAll(FILE *f)
{
    std::string text;
    rewind(f);
    char buffer[4096];
    size_t n;
    while ((n = fread(buffer, 1, sizeof buffer, f)) > 0)
        text.append(buffer, n);
    return text;
}

struct Outcome {
    int status;
    std::string out, err;
};

Outcome RunInProcess(std::vector<std::string> args)
{
    args.insert(args.begin(), "lunaquill-plan");
    std::vector<const char *> argv;
    for (const std::string &a : args)
        argv.push_back(a.c_str());
    PlanDefaults defaults;
    defaults.homeSet = true;
    defaults.homeLatitude = 42.520833;
    defaults.homeLongitude = -70.958333;
    defaults.homeName = "FN42mm";
    defaults.now = kJune1;
    defaults.version = "9.99";
    FILE *out = tmpfile(), *err = tmpfile();
    Outcome run;
    run.status = RunPlanCommand(int(argv.size()), argv.data(), defaults, out, err);
    run.out = ReadAll(out);
    run.err = ReadAll(err);
    fclose(out);
    fclose(err);
    return run;
}

std::vector<std::string> Lines(const std::string &text)
{
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

} // namespace

TEST(PlanCommand, RefusesBadInputWithOneLineNamingIt)
{
    const std::string huge(5000, 'A');
    const struct { std::vector<std::string> args; const char *named; } rows[] = {
        {{"--bogus"}, "--bogus"},
        {{"FN42mm"}, "FN42mm"},
        {{"--home", "ZZ99"}, "--home"},
        {{"--home", "FN42m"}, "--home"},
        {{"--dx", "FN42mmaa"}, "--dx"},
        {{"--home", "91,10"}, "--home"},
        {{"--home", "-90.5,0"}, "--home"},
        {{"--dx", "45,181"}, "--dx"},
        {{"--dx", "nan,0"}, "--dx"},
        {{"--days", "0"}, "--days"},
        {{"--days", "367"}, "--days"},
        {{"--days", "-3"}, "--days"},
        {{"--days", "3.5"}, "--days"},
        {{"--days"}, "--days"},
        {{"--from", "2025-02-29T00:00Z"}, "--from"},
        {{"--from", "2025-06-01T24:00Z"}, "--from"},
        {{"--from", "2025-06-01 12:00"}, "--from"},
        {{"--from", "2025-6-1T12:00Z"}, "--from"},
        {{"--min-elevation", "NaN"}, "--min-elevation"},
        {{"--min-elevation", "-2.5"}, "--min-elevation"},
        {{"--dx-min-elevation", "91"}, "--dx-min-elevation"},
        {{"--frequency", "-144"}, "--frequency"},
        {{"--frequency", "0"}, "--frequency"},
        {{"--frequency", "inf"}, "--frequency"},
        {{"--frequency", "144MHz"}, "--frequency"},
        {{"--csv=yes"}, "--csv"},
        {{"--home", huge}, "--home"},
        {{huge}, "AAAA"},
        {{"--dx", "JO62qm", "--days", "3", "--frequency", "nan"}, "--frequency"},
    };
    for (const auto &row : rows) {
        const Outcome run = RunInProcess(row.args);
        SCOPED_TRACE(row.args.front().substr(0, 20) + " " + row.named);
        EXPECT_EQ(run.status, 2);
        EXPECT_TRUE(run.out.empty()) << run.out;
        ASSERT_EQ(Lines(run.err).size(), 1u) << run.err;
        EXPECT_NE(run.err.find(row.named), std::string::npos) << run.err;
        EXPECT_LT(run.err.size(), 200u);
    }
}

// The windows' CSV: the fixed first columns, times as YYYY-MM-DDTHH:MMZ, minutes as the two
// times differ; the home station alone and with a DX station (--opt=value works too).
TEST(PlanCommand, WindowsAndConditionsAsCsv)
{
    Outcome run = RunInProcess({"--dx=JO62qm", "--days", "3", "--csv", "--from", "2025-06-01T00:00Z"});
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(run.err.empty());
    std::vector<std::string> lines = Lines(run.out);
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines[0].rfind("start_utc,end_utc,minutes,", 0), 0u) << lines[0];
    for (size_t i = 1; i < lines.size(); ++i) {
        int y, mo, d, h, mi, y2, mo2, d2, h2, mi2, minutes;
        ASSERT_EQ(sscanf(lines[i].c_str(), "%4d-%2d-%2dT%2d:%2dZ,%4d-%2d-%2dT%2d:%2dZ,%d", &y, &mo,
                         &d, &h, &mi, &y2, &mo2, &d2, &h2, &mi2, &minutes),
                  11)
            << lines[i];
        EXPECT_EQ(minutes, ((d2 - d) * 24 + h2 - h) * 60 + mi2 - mi) << lines[i];
    }
    // The same plan by the core, row for row.
    PlanRequest r;
    r.home = {42.520833, -70.958333, 0.0};
    r.dx = {52.520833, 13.375, 0.0};
    r.hasDx = true;
    r.from = kJune1;
    r.days = 3;
    EXPECT_EQ(run.out, WindowsCsv(PlanMutualWindows(r), true));

    run = RunInProcess({"--conditions", "--csv", "--days", "30", "--frequency", "144"});
    ASSERT_EQ(run.status, 0) << run.err;
    lines = Lines(run.out);
    ASSERT_EQ(lines.size(), 31u);
    EXPECT_EQ(lines[0].rfind("date,transit_utc,elevation_deg,declination_deg,distance_km,"
                             "path_loss_db,sky_temp_k,degradation_db,sun_moon_deg",
                             0),
              0u);
    EXPECT_EQ(lines[1].rfind("2025-06-01,2025-06-01T", 0), 0u) << lines[1];
    EXPECT_EQ(lines[30].rfind("2025-06-30,2025-06-30T", 0), 0u) << lines[30];
}

TEST(PlanCommand, TablesHelpAndVersion)
{
    Outcome run = RunInProcess({"--dx", "JO62qm", "--days", "3"});
    ASSERT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("FN42mm"), std::string::npos);
    EXPECT_NE(run.out.find("JO62qm"), std::string::npos);
    EXPECT_NE(run.out.find("2025-06-01 14:54"), std::string::npos) << run.out;
    // The first days of June 2025 have the Moon some 18 deg north: it never sets at the
    // North Pole and never rises at the South Pole.
    run = RunInProcess({"--home", "-89.9,0", "--min-elevation", "5", "--days", "3"});
    ASSERT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("; 0 windows"), std::string::npos) << run.out;
    run = RunInProcess({"--home", "89.9,0", "--min-elevation", "5", "--days", "2"});
    EXPECT_NE(run.out.find("; 1 window\n"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("2025-06-01 00:00  2025-06-03 00:00  2880"), std::string::npos)
        << run.out;
    run = RunInProcess({"--help"});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.out.find("--dx-min-elevation"), std::string::npos);
    run = RunInProcess({"--version"});
    EXPECT_EQ(run.out, "lunaquill-plan 9.99\n");
}

#ifdef LUNAQUILL_PLAN
// The program itself, in an empty HOME (no settings file: the default home station).
TEST(PlanCommand, TheProgram)
{
    char home[] = "/tmp/plan-home-XXXXXX";
    ASSERT_NE(mkdtemp(home), nullptr);
    const std::string outPath = std::string(home) + "/out", errPath = std::string(home) + "/err";
    auto run = [&](std::vector<std::string> args) {
        args.insert(args.begin(), LUNAQUILL_PLAN);
        std::vector<char *> argv;
        for (std::string &a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        const std::string homeVar = std::string("HOME=") + home;
        char *envp[] = {const_cast<char *>(homeVar.c_str()), nullptr};
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        pid_t pid;
        Outcome result{-1, {}, {}};
        if (posix_spawn(&pid, LUNAQUILL_PLAN, &actions, nullptr, argv.data(), envp) == 0) {
            int status = 0;
            waitpid(pid, &status, 0);
            result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        posix_spawn_file_actions_destroy(&actions);
        FILE *f = fopen(outPath.c_str(), "r");
        result.out = ReadAll(f);
        fclose(f);
        f = fopen(errPath.c_str(), "r");
        result.err = ReadAll(f);
        fclose(f);
        return result;
    };
    Outcome r = run({"--home", "FN42mm", "--dx", "JO62qm", "--days", "3"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("Moon windows for FN42mm"), std::string::npos) << r.out;
    r = run({"--days", "1", "--csv"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.rfind("start_utc,end_utc,minutes,", 0), 0u);
    for (const std::vector<std::string> &bad :
         {std::vector<std::string>{"--days", "0"}, {"--frequency", "NaN"},
          {"--home", std::string(5000, '9')}, {std::string(5000, '-')}}) {
        r = run(bad);
        EXPECT_EQ(r.status, 2) << bad[0].substr(0, 10);
        EXPECT_TRUE(r.out.empty());
        EXPECT_EQ(Lines(r.err).size(), 1u) << r.err;
    }
    unlink(outPath.c_str());
    unlink(errPath.c_str());
    rmdir(home);
}
#endif
