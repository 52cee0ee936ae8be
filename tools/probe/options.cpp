#include "options.h"

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace tavmir
{
namespace probe
{

namespace
{

const int kMostElements = 4096;
const int kMostStations = 255;
const int kLongestTimeoutMs = 600000;

// A decimal number in [least, most].
bool parseNumber(const std::string& text, int least, int most, int& number)
{
    if (text.empty() || text.size() > 10 ||
        text.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    const long long value = std::strtoll(text.c_str(), nullptr, 10);
    if (value < least || value > most) {
        return false;
    }
    number = static_cast<int>(value);
    return true;
}

bool parseDataType(const std::string& text, int& dataType)
{
    static const struct {
        const char* name;
        int dataType;
    } kNames[] = {{"bit", 1}, {"word", 4}, {"dword", 6}, {"text", 10}, {"1", 1},
                  {"4", 4},   {"6", 6},    {"7", 7},     {"10", 10}};
    for (const auto& known : kNames) {
        if (text == known.name) {
            dataType = known.dataType;
            return true;
        }
    }
    return false;
}

// TYPE:ADDRESS[:COUNT]
std::string parseRead(const std::string& text, Options& options)
{
    const std::size_t first = text.find(':');
    if (first == std::string::npos) {
        return "--read wants TYPE:ADDRESS[:COUNT], not \"" + text + "\"";
    }
    const std::size_t second = text.find(':', first + 1);
    const bool counted = second != std::string::npos;
    const std::string address =
        text.substr(first + 1, counted ? second - first - 1 : std::string::npos);
    if (!parseDataType(text.substr(0, first), options.dataType)) {
        return "no such type \"" + text.substr(0, first) +
               "\": bit, word, dword, text, 1, 4, 6, 7, 10";
    }
    if (!parseNumber(address, 0, INT_MAX, options.elementAddress)) {
        return "no element address: \"" + address + "\"";
    }
    if (counted && !parseNumber(text.substr(second + 1), 1, kMostElements, options.count)) {
        return "a count is 1 to 4096, not \"" + text.substr(second + 1) + "\"";
    }
    return std::string();
}

std::string parseConnect(const std::string& text, Options& options)
{
    return wire::parseEndpoint(text, 1, options.controller)
               ? std::string()
               : "--connect wants HOST:PORT, not \"" + text + "\"";
}

std::string parseValue(const std::string& name, const std::string& value, Options& options)
{
    if (name == "--library") {
        options.library = value;
        return value.empty() ? "--library wants a file" : std::string();
    }
    if (name == "--connect") {
        return parseConnect(value, options);
    }
    if (name == "--read") {
        return parseRead(value, options);
    }
    if (name == "--capture") {
        options.capture = value;
        return value.empty() ? "--capture wants a file" : std::string();
    }
    if (name == "--station") {
        return parseNumber(value, 0, kMostStations, options.station)
                   ? std::string()
                   : "a station is 0 to 255, not \"" + value + "\"";
    }
    if (name == "--timeout") {
        return parseNumber(value, 1, kLongestTimeoutMs, options.timeoutMs)
                   ? std::string()
                   : "a time-out is 1 to 600000 ms, not \"" + value + "\"";
    }
    return "no such option: " + name;
}

} // namespace

const char* usage()
{
    return "Usage: tavmir-probe [OPTION]...\n"
           "Loads libtavmir_kx_tcp.so.1, prints what it is, resolves its entry points, and\n"
           "touches no controller unless told to read.\n"
           "\n"
           "  --library FILE      this library; else the one beside the program, else the\n"
           "                      one installed with it, else the loader's\n"
           "  --records           print the position of every member of every record\n"
           "  --connect HOST:PORT the controller to read from\n"
           "  --station N         its station number, 0 to 255 (1)\n"
           "  --read TYPE:ADDRESS[:COUNT]\n"
           "                      what to read: bit, word, dword, text, or the data type's\n"
           "                      number; the element address in bits; elements (1)\n"
           "  --capture FILE      write every byte that is exchanged into FILE, as a pcapng\n"
           "                      capture\n"
           "  --timeout MS        patience for the connection and for each answer (3000)\n"
           "  --version           print the probe's version\n"
           "  --help              print this text\n"
           "\n"
           "Exit status: 0 all well, 1 something failed, 2 wrong usage.\n";
}

std::string parseOptions(int argc, const char* const argv[], Options& options)
{
    for (int i = 0; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--help" || name == "-h") {
            options.help = true;
        } else if (name == "--version") {
            options.version = true;
        } else if (name == "--records") {
            options.records = true;
        } else if (i + 1 == argc) {
            return name.compare(0, 2, "--") == 0 ? name + " wants a value, or is no option"
                                                 : "no such option: " + name;
        } else {
            const std::string error = parseValue(name, argv[++i], options);
            if (!error.empty()) {
                return error;
            }
        }
    }
    if (options.controller.host.empty() != (options.dataType == 0)) {
        return "--connect and --read belong together";
    }
    if (!options.capture.empty() && options.dataType == 0) {
        return "--capture has nothing to show without --read";
    }
    return std::string();
}

} // namespace probe
} // namespace tavmir
