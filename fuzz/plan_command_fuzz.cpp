// lunaquill-plan's command line on any arguments: the input cut at each line
// feed gives up to 12 of them. Whatever they are, the run ends with status 0
// and nothing on stderr, or status 2, nothing on stdout and one line on
// stderr, never longer than the option and 40 characters of its value allow.
#include "FuzzSupport.h"

#include "tracking/PlanText.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace lunaquill;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::vector<std::string> args = fuzz::Fields(data, size, 12);
    while (!args.empty() && args.back().empty())
        args.pop_back();
    // The longest plans (366 days) are valid but slow; a fuzzer learns nothing
    // more from them than from a week.
    for (const std::string &a : args)
        if (a.find("--days") != std::string::npos || a.find("--help") != std::string::npos)
            return 0;
    std::vector<const char *> argv = {"lunaquill-plan"};
    for (const std::string &a : args)
        argv.push_back(a.c_str());

    PlanDefaults defaults;
    defaults.homeSet = size % 2 == 0;
    defaults.homeLatitude = 42.52;
    defaults.homeLongitude = -70.96;
    defaults.now = 1748736000;
    char *outText = nullptr, *errText = nullptr;
    size_t outSize = 0, errSize = 0;
    FILE *out = open_memstream(&outText, &outSize);
    FILE *err = open_memstream(&errText, &errSize);
    FUZZ_CHECK(out && err);
    const int status = RunPlanCommand(int(argv.size()), argv.data(), defaults, out, err);
    fclose(out);
    fclose(err);
    const std::string printed(outText, outSize), complaint(errText, errSize);
    free(outText);
    free(errText);

    FUZZ_CHECK(status == 0 || status == 2);
    if (status == 0) {
        FUZZ_CHECK(complaint.empty() && !printed.empty());
    } else {
        FUZZ_CHECK(printed.empty());
        FUZZ_CHECK(!complaint.empty() && complaint.find('\n') == complaint.size() - 1);
        FUZZ_CHECK(complaint.size() < 200);
    }
    return 0;
}
