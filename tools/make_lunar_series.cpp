// Writes tracking/LunarSeriesTables.cpp: the 36 series of the ELP 2000-82B
// lunar theory and its constants, copied from libnova's src/lunar.c. Every
// number is copied as the text it is written as there, so the compiler makes
// the same doubles of it as it made for libnova.
// Usage: make_lunar_series <libnova-source-folder> <out.cpp>
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string ReadFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return in ? text.str() : std::string();
}

// The initialiser of `static const <type> <name> [<size>] = { ... };`, or
// empty when the array is missing.
std::string ArrayBody(const std::string &source, const std::string &name)
{
    const std::regex head("static const [a-z_ ]+ " + name + R"(\s*\[[A-Z0-9_]+\]\s*=\s*\{)");
    std::smatch match;
    if (!std::regex_search(source, match, head))
        return {};
    const size_t start = size_t(match.position(0) + match.length(0));
    const size_t end = source.find("};", start);
    return end == std::string::npos ? std::string() : source.substr(start, end - start);
}

std::vector<std::string> Numbers(const std::string &text)
{
    static const std::regex number(R"([-+]?[0-9]*\.?[0-9]+(?:[eE][-+]?[0-9]+)?)");
    std::vector<std::string> numbers;
    for (auto it = std::sregex_iterator(text.begin(), text.end(), number);
         it != std::sregex_iterator(); ++it)
        numbers.push_back(it->str());
    return numbers;
}

// A `#define NAME value` of the theory's constants, as a C++ constant.
bool CopyDefine(const std::string &source, const std::string &name, std::ostream &out)
{
    const std::regex define(R"(#define\s+)" + name + R"(\s+([^\n]*?)\s*(?:/\*[^\n]*)?\n)");
    std::smatch match;
    if (!std::regex_search(source, match, define))
        return false;
    out << "const double " << name << " = " << match[1].str() << ";\n";
    return true;
}

// A small constant array (`W1`, `del`, `zeta`, `p`) as written there.
bool CopyConstantArray(const std::string &source, const std::string &name,
                       const std::string &dimensions, std::ostream &out)
{
    const std::regex head("static const double " + name + R"(\s*(\[[0-9]+\])+\s*=\s*\{)");
    std::smatch match;
    if (!std::regex_search(source, match, head))
        return false;
    const size_t start = size_t(match.position(0) + match.length(0));
    const size_t end = source.find("};", start);
    if (end == std::string::npos)
        return false;
    std::string body = source.substr(start, end - start);
    body = std::regex_replace(body, std::regex(R"(\s+)"), " ");
    out << "const double " << name << dimensions << " = {" << body << "};\n";
    return true;
}

struct Series {
    const char *table; // the array's name in lunar.c
    const char *type;  // our record type
    int fields;        // numbers per record
};

// ilu[4], A, B[5] | iz, ilu[4], O, A, P | ipla[11], theta, O, P
const char *RecordText(const std::string &type, const std::vector<std::string> &n, size_t i)
{
    static std::string text;
    auto at = [&](size_t k) { return n[i + k]; };
    if (type == "MainTerm") {
        text = "{{" + at(0) + ", " + at(1) + ", " + at(2) + ", " + at(3) + "}, " + at(4) + ", {"
               + at(5) + ", " + at(6) + ", " + at(7) + ", " + at(8) + ", " + at(9) + "}}";
    } else if (type == "EarthTerm") {
        text = "{" + at(0) + ", {" + at(1) + ", " + at(2) + ", " + at(3) + ", " + at(4) + "}, "
               + at(5) + ", " + at(6) + ", " + at(7) + "}";
    } else {
        text = "{{";
        for (size_t k = 0; k < 11; ++k)
            text += at(k) + (k < 10 ? ", " : "}, ");
        text += at(11) + ", " + at(12) + ", " + at(13) + "}";
    }
    return text.c_str();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_lunar_series <libnova-source-folder> <out.cpp>\n");
        return 2;
    }
    const std::string source = ReadFile(std::string(argv[1]) + "/src/lunar.c");
    if (source.empty()) {
        std::fprintf(stderr, "cannot read %s/src/lunar.c\n", argv[1]);
        return 1;
    }

    static const Series series[36] = {
        {"main_elp1", "MainTerm", 10},          {"main_elp2", "MainTerm", 10},
        {"main_elp3", "MainTerm", 10},          {"earth_pert_elp4", "EarthTerm", 8},
        {"earth_pert_elp5", "EarthTerm", 8},    {"earth_pert_elp6", "EarthTerm", 8},
        {"earth_pert_elp7", "EarthTerm", 8},    {"earth_pert_elp8", "EarthTerm", 8},
        {"earth_pert_elp9", "EarthTerm", 8},    {"plan_pert_elp10", "PlanetTerm", 14},
        {"plan_pert_elp11", "PlanetTerm", 14},  {"plan_pert_elp12", "PlanetTerm", 14},
        {"plan_pert_elp13", "PlanetTerm", 14},  {"plan_pert_elp14", "PlanetTerm", 14},
        {"plan_pert_elp15", "PlanetTerm", 14},  {"plan_pert_elp16", "PlanetTerm", 14},
        {"plan_pert_elp17", "PlanetTerm", 14},  {"plan_pert_elp18", "PlanetTerm", 14},
        {"plan_pert_elp19", "PlanetTerm", 14},  {"plan_pert_elp20", "PlanetTerm", 14},
        {"plan_pert_elp21", "PlanetTerm", 14},  {"tidal_effects_elp22", "EarthTerm", 8},
        {"tidal_effects_elp23", "EarthTerm", 8}, {"tidal_effects_elp24", "EarthTerm", 8},
        {"tidal_effects_elp25", "EarthTerm", 8}, {"tidal_effects_elp26", "EarthTerm", 8},
        {"tidal_effects_elp27", "EarthTerm", 8}, {"moon_pert_elp28", "EarthTerm", 8},
        {"moon_pert_elp29", "EarthTerm", 8},    {"moon_pert_elp30", "EarthTerm", 8},
        {"rel_pert_elp31", "EarthTerm", 8},     {"rel_pert_elp32", "EarthTerm", 8},
        {"rel_pert_elp33", "EarthTerm", 8},     {"plan_sol_pert_elp34", "EarthTerm", 8},
        {"plan_sol_pert_elp35", "EarthTerm", 8}, {"plan_sol_pert_elp36", "EarthTerm", 8},
    };

    std::ostringstream out;
    out << "// Generated by tools/make_lunar_series from src/lunar.c of libnova 0.16\n"
           "// (Debian source package libnova 0.16-5, LGPL-2+): the ELP 2000-82B\n"
           "// lunar theory of M. Chapront-Touze and J. Chapront. Do not edit; see\n"
           "// tracking/LUNAR-SERIES.md.\n"
           "#include \"tracking/LunarSeries.h\"\n\n"
           "#include <cmath>\n#include <iterator>\n\n"
           "namespace lunaquill::elp {\n\n";

    // The constants in the order they are defined there, each after those it uses.
    static const char *const defines[] = {
        "RAD", "DEG", "ATH", "A0", "AM", "ALPHA", "DTASM", "W12", "PRECES", "C1", "C2",
        "DELNU", "DELE", "DELG", "DELNP", "DELEP", "P1", "P2", "P3", "P4", "P5",
        "Q1", "Q2", "Q3", "Q4", "Q5",
    };
    for (const char *name : defines) {
        if (!CopyDefine(source, name, out)) {
            std::fprintf(stderr, "no #define %s in lunar.c\n", name);
            return 1;
        }
    }
    out << "\n";
    if (!CopyConstantArray(source, "W1", "[5]", out) || !CopyConstantArray(source, "del", "[4][5]", out)
        || !CopyConstantArray(source, "zeta", "[2]", out) || !CopyConstantArray(source, "p", "[8][2]", out)) {
        std::fprintf(stderr, "a constant array is missing in lunar.c\n");
        return 1;
    }

    size_t total = 0;
    for (int s = 0; s < 36; ++s) {
        const std::vector<std::string> numbers = Numbers(ArrayBody(source, series[s].table));
        if (numbers.empty() || numbers.size() % size_t(series[s].fields) != 0) {
            std::fprintf(stderr, "%s: %zu numbers, not whole records of %d\n", series[s].table,
                         numbers.size(), series[s].fields);
            return 1;
        }
        const size_t count = numbers.size() / size_t(series[s].fields);
        // The count lunar.c declares for the series, as a check on the reading.
        std::smatch declared;
        const std::regex size("#define\\s+ELP" + std::to_string(s + 1) + "_SIZE\\s+([0-9]+)");
        if (!std::regex_search(source, declared, size) || std::stoul(declared[1].str()) != count) {
            std::fprintf(stderr, "%s: %zu records, not as declared\n", series[s].table, count);
            return 1;
        }
        total += count;
        out << "\nconst " << series[s].type << " kSeries" << (s + 1) << "[" << count << "] = {\n";
        for (size_t i = 0; i < numbers.size(); i += size_t(series[s].fields))
            out << "    " << RecordText(series[s].type, numbers, i) << ",\n";
        out << "};\n";
    }
    out << "\nconst SeriesTable kSeries[36] = {\n";
    for (int s = 0; s < 36; ++s) {
        const std::string type = series[s].type;
        out << "    {" << (type == "MainTerm" ? "kSeries" + std::to_string(s + 1) : "nullptr") << ", "
            << (type == "EarthTerm" ? "kSeries" + std::to_string(s + 1) : "nullptr") << ", "
            << (type == "PlanetTerm" ? "kSeries" + std::to_string(s + 1) : "nullptr")
            << ", int(std::size(kSeries" << (s + 1) << "))},\n";
    }
    out << "};\n\n} // namespace lunaquill::elp\n";

    std::ofstream file(argv[2], std::ios::binary);
    file << out.str();
    if (!file) {
        std::fprintf(stderr, "cannot write %s\n", argv[2]);
        return 1;
    }
    std::printf("%zu terms in 36 series\n", total);
    return 0;
}
