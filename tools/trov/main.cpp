// trov: the TROV codec on the command line.
//
//   trov decode [--raw|--hex] [--request] [--port N] [--ndjson|--text] [--color=WHEN] [-c N] [--skip N]
//               [-o FILE] [FILE...|-]
//   trov encode [--raw] [-o FILE] [FILE|-]
//   trov tables [--json]
//
// Every command's work lives in trov_tool_core; this file is the command line.
// Exit codes: 0 success; 1 some packet failed to decode; 2 usage, input or
// output errors. No exception leaves main, and a reader that goes away (a
// closed pipe) ends the tool quietly with a non-zero code.
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "DecodeCommand.h"
#include "EncodeCommand.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Tables.h"
#include "TextView.h"
#include "ToolVersion.h"
#include "TrovCodec.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

// ---------------------------------------------------------------- conveniences

// Levenshtein distance, for suggesting a command.
size_t distance(const std::string &a, const std::string &b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The first word that is not an option must be a command: an unknown one is
// reported with the nearest command, if one is near ("decod" -> "decode").
// False after reporting.
bool knownCommand(CLI::App &app, int argc, char **argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (!word.empty() && word[0] == '-') continue;
        std::string names, nearest;
        size_t best = 3; // at most two edits away
        for (const CLI::App *command : app.get_subcommands({})) {
            if (command->get_name() == word) return true;
            names += (names.empty() ? "" : ", ") + command->get_name();
            const size_t d = distance(word, command->get_name());
            if (d < best || (word.size() >= 3 && command->get_name().rfind(word, 0) == 0)) {
                best = std::min(d, best);
                nearest = command->get_name();
            }
        }
        std::cerr << "trov: unknown command '" << word << "'"
                  << (nearest.empty() ? "; the commands are " + names : "; did you mean '" + nearest + "'?") << '\n';
        return false;
    }
    return true;
}

// A closed standard input would let the first file opened take descriptor 0
// and be read in its place; holding the slot with a descriptor open for
// writing only makes reading it fail as a closed one does.
void holdClosedStandardInput() {
#ifndef _WIN32
    if (fcntl(0, F_GETFD) == -1 && errno == EBADF) {
        const int fd = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (fd > 0) ::close(fd);
    }
#endif
}

// ---------------------------------------------------------------- commands

int run(int argc, char **argv) {
    CLI::App app{"trov: converts between TROV packets and JSON through the TROV codec library.", "trov"};
    app.set_version_flag("--version", trov::versionLine(), "Print the tool's version and exit");
    app.require_subcommand(1);
    // Options are spelled --name on every platform, so that a path such as
    // /captures/a.hex is a file and not an option, under Windows too.
    app.allow_windows_style_options(false);

    trov::DecodeOptions decodeOptions;
    std::vector<std::string> decodeFiles;
    bool raw = false, hex = false, ndjson = false, text = false;
    CLI::App *decode = app.add_subcommand("decode", "Decode packets (raw bytes or hex text) and print them as JSON");
    CLI::Option *rawFlag = decode->add_flag("--raw", raw, "Read the input as raw bytes");
    decode->add_flag("--hex", hex, "Read the input as hex text")->excludes(rawFlag);
    decode->add_flag("--request", decodeOptions.request, "Read bodies as requests instead of replies");
    decode->add_option("--port", decodeOptions.port, "Captures: the server's TCP port, for connections without a SYN")
        ->check(CLI::Range(1, 65535));
    CLI::Option *ndjsonFlag = decode->add_flag("--ndjson", ndjson, "One compact JSON object per line");
    decode->add_flag("--text", text, "An indented human view, codes in hex")->excludes(ndjsonFlag);
    std::string colour = "auto";
    decode->add_option("--color", colour, "Colour the --text view: auto (on a terminal, NO_COLOR unset), always, never")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    decode->add_option("FILE", decodeFiles, "Input files; - or none: standard input");
    decode->add_option("-c", decodeOptions.count, "Stop after printing N packets")->option_text("N");
    decode->add_option("--skip", decodeOptions.skip, "Skip the first N packets before printing")->option_text("N");
    std::string outputPath = "-";
    decode->add_option("-o", outputPath, "Write the output to FILE instead of standard output")->option_text("FILE");

    std::string encodeFile = "-";
    bool encodeRaw = false;
    CLI::App *encode = app.add_subcommand("encode", "Encode JSON packet objects into packets (hex text by default)");
    encode->add_flag("--raw", encodeRaw, "Write raw bytes instead of hex text");
    encode->add_option("FILE", encodeFile, "Input file; - or none: standard input");
    encode->add_option("-o", outputPath, "Write the output to FILE instead of standard output")->option_text("FILE");

    bool tablesJson = false;
    CLI::App *tables = app.add_subcommand("tables", "List the body, event, method, attribute and data-type layouts");
    tables->add_flag("--json", tablesJson, "Print JSON instead of text");

    if (!knownCommand(app, argc, argv)) return trov::kExitInputError;
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &e) {
        const int code = app.exit(e, std::cout, std::cerr);
        return code == 0 ? 0 : trov::kExitInputError;
    }

    std::unique_ptr<std::ostream> outputFile;
    if (outputPath != "-") {
        std::string error;
        outputFile = trov::openOutput(outputPath, error);
        if (outputFile == nullptr) {
            std::cerr << "trov: " << error << '\n';
            return trov::kExitInputError;
        }
    }
    std::ostream &out = outputFile != nullptr ? *outputFile : std::cout;

    TROV_InitCoder();
    if (*decode) {
        decodeOptions.format = raw ? trov::InputFormat::Raw : hex ? trov::InputFormat::Hex : trov::InputFormat::Detect;
        decodeOptions.style = ndjson ? trov::OutputStyle::Ndjson
                              : text ? trov::OutputStyle::Text
                                     : trov::OutputStyle::JsonArray;
        // A file named by -o is no terminal: colour only when asked always.
        trov::setTextColour(out, text && trov::colourWanted(outputFile != nullptr && colour == "auto" ? "never" : colour));
#ifdef _WIN32
        if (decodeOptions.format != trov::InputFormat::Hex) _setmode(_fileno(stdin), _O_BINARY);
#endif
        // Progress on a terminal that the packets are not printed to.
        decodeOptions.progress = trov::isTerminal(stderr) && (outputFile != nullptr || !trov::isTerminal(stdout));
        return trov::runDecode(decodeFiles, decodeOptions, std::cin, out, std::cerr);
    }
    if (*encode) {
#ifdef _WIN32
        if (encodeRaw) _setmode(_fileno(stdout), _O_BINARY);
#endif
        return trov::runEncode(encodeFile, encodeRaw, out, std::cerr);
    }
    return trov::runTables(tablesJson, std::cout);
}

} // namespace

int main(int argc, char **argv) {
#ifdef SIGPIPE
    // A closed pipe shows as a failed write, which the commands end on.
    std::signal(SIGPIPE, SIG_IGN);
#endif
    holdClosedStandardInput();
    try {
        return run(argc, argv);
    } catch (const std::exception &e) {
        std::cerr << "trov: " << e.what() << '\n';
    } catch (...) {
        std::cerr << "trov: unexpected error\n";
    }
    return trov::kExitInputError;
}
