#include "run/command_line.hpp"

#include "run/version.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <fmt/format.h>
#include <string>

namespace kvr {

namespace {

constexpr int MostThreads = 1024;

constexpr const char* Purpose =
    "KVR, a black-oil reservoir simulator: streamlines, IMPES and the fully implicit method.\n"
    "Runs the deck; results stand beside it under its name, as CASE_Summary.csv of CASE.DATA.\n"
    "Without a deck it looks for ECLIPSE.DATA in the present folder, or asks for a name.";

void declare(CLI::App& app, CommandLine& command) {
    app.set_version_flag("--version", fmt::format("KVR {}", Version));
    app.add_option(
        "CASE.DATA", command.deck,
        "the deck to run, .DATA may be left out; a folder with a three-file deck; or an .afi file");
    app.add_option("--output-dir", command.outputFolder, "folder for all results, made where it is missing")
        ->type_name("DIR");
    app.add_option("--threads", command.threads, "number of threads; results are the same for any")
        ->type_name("N")
        ->check(CLI::Range(1, MostThreads));
    app.add_flag("--check", command.check,
                 "read and check the deck and say what it holds; run and write nothing");
    app.add_flag("--allow-outside", command.allowOutside,
                 "let the deck start the outside simulator that it names (ECLCOMM)");
    app.add_flag("--verbose", command.verbose, "show on the console what the log has, too");
}

std::string onOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

std::optional<int> readCommandLine(int count, const char* const* words, CommandLine& command) {
    CLI::App app(Purpose, "kvr");
    declare(app, command);
    try {
        app.parse(count, words);
    } catch (const CLI::Success& asked) {
        return app.exit(asked);
    } catch (const CLI::ParseError& error) {
        std::fputs(fmt::format("kvr: {}; kvr --help lists the options\n", onOneLine(error.what())).c_str(),
                   stderr);
        return WrongCommandLine;
    }
    return std::nullopt;
}

}  // namespace kvr
