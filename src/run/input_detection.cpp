#include "run/input_detection.hpp"

#include "base/hard_stop.hpp"
#include "base/text.hpp"
#include "deck/native_deck.hpp"
#include "deck/reading/deck_cursor.hpp"
#include "run/example_deck.hpp"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kvr {

namespace {

constexpr std::string_view DataExtension = ".DATA";
constexpr std::size_t MostDecksNamed = 10;  // behind a name that is not found
constexpr std::string_view IxExtension = ".afi";
constexpr std::string_view FirstRestart = ".X0001";  // of a run that has left results
constexpr std::size_t MaxNameLength = 2048;
constexpr std::string_view NotFound = "WARNING: KVR Input File not found";
constexpr std::string_view HeaderPrompt = "Input Header name of ECLIPSE RESTART :: -XXXX-.DATA";

/// A deck that is known by its name, behind the native one; the first that exists is taken.
struct KnownDeck {
    std::string_view fileName;
    std::string_view message;
    std::string_view header;
    int inputMode;
};
constexpr std::array<KnownDeck, 3> KnownDecks = {
    {{"ECLIPSE.DATA", "Insted of that, we found ECLIPSE.DATA file ...", "ECLIPSE", input_mode::EclipseForm},
     {"FRONTSIM.DATA", "Insted of that, we found FRONTSIM.DATA file ...", "FRONTSIM",
      input_mode::EclipseForm},
     {"ECLIPSE.afi", "Insted of that, we found IX.afi file ...", "ECLIPSE", input_mode::IxDeck}}};

constexpr std::array<std::string_view, 12> UsageText = {
    "---- ECLRUN / HISTORY MATCH / DATA CONVERSION ------",
    "Add following key to ECLIPSE input deck after END",
    "Keyword -> TUNEKVR  (To activate KVR option     )",
    "Keyword -> ECL2TEC  (Convert output to Tecplot  )",
    "Keyword -> ECLTRACE (Run ECLIPSE and trace SLine)",
    "Keyword -> DOINV    (History Match with WCONHIST)",
    "Keyword -> OPTIMIZE (Optimization with  WFOOPT  )",
    "Need to have following file to run option",
    "RESTART (*.X000 )  (For data conversion  )",
    "GRID    (*.E|GRID) (For data conversion  )",
    "INPUT   (*.DATA )  (If Output cannot find)",
    "SUMMARY (*.S000 )  (If Correct TOF needed)"};

constexpr std::array<std::string_view, 4> OutlookText = {
    "ECLIPSE -> TECPLOT Conversion if TEC2ECL", "ECLIPSE -> Streamline tracing if ECLTRACE",
    "(Will do something else if either cannot find", " of the keywords in the deck)"};

bool exists(std::string_view name) {
    return !existingPath(std::string(name)).empty();
}

void takeHeader(std::string_view header, RunOptions& options) {
    options.headerName = header;
    options.dataFileBase = header;
}

/// Files of the three-file deck that a folder (blank, or with its separator) lacks.
std::vector<std::string> missingParts(const std::string& folder) {
    std::vector<std::string> missing;
    for (const std::string_view name : NativeDeckFiles)
        if (!exists(folder + std::string(name))) missing.emplace_back(name);
    return missing;
}

bool detectNativeDeck(const Console& console, RunOptions& options) {
    if (!missingParts("").empty()) return false;
    lineToBoth(console, "WARNING: KVR Files detected...");
    takeHeader("KVR", options);
    return true;
}

bool detectKnownDeck(const Console& console, RunOptions& options) {
    for (const KnownDeck& deck : KnownDecks) {
        if (!exists(deck.fileName)) continue;
        lineToBoth(console, NotFound);
        lineToBoth(console, deck.message);
        options.inputMode = deck.inputMode;
        options.ixExtract = deck.inputMode == input_mode::IxDeck;
        takeHeader(deck.header, options);
        return true;
    }
    return false;
}

/// One line of the console, blanks off; empty at the end of the input.
std::string readAnswer(const Console& console) {
    std::string answer;
    if (console.screen != nullptr) std::fflush(console.screen);
    if (console.input == nullptr) return answer;
    for (int c = std::fgetc(console.input); c != EOF && c != '\n'; c = std::fgetc(console.input)) {
        if (answer.size() < MaxNameLength) answer.push_back(static_cast<char>(c));
    }
    return std::string(trim(answer));
}

std::string withExtension(const std::string& name) {
    const bool hasOne = name.ends_with(DataExtension) || name.ends_with(IxExtension);
    return hasOne ? name : name + std::string(DataExtension);
}

/// The prompt loop: "0" writes the example deck, anything else is the name of a deck.
std::string askForName(const Console& console) {
    for (;;) {
        lineToBoth(console, HeaderPrompt);
        lineToBoth(console, "(Type 0 to generate example Deck)");
        const std::string answer = readAnswer(console);
        if (!answer.starts_with('0')) return withExtension(answer);
        writeExampleDeck(console, "ECLIPSE.DATA");
        lineToBoth(console, "Example KVR Deck Generated in Local Folder.");
    }
}

/// A name whose file exists, with the separators under which it does; a second miss ends the run.
std::string askForDeck(const Console& console) {
    std::string name = askForName(console);
    if (exists(name)) return existingPath(name);
    both(console, "Cannot find file :: {}", name);
    lineToBoth(console, HeaderPrompt);
    name = withExtension(readAnswer(console));
    if (exists(name)) return existingPath(name);
    both(console, "Cannot find file :: {} End Program.", name);
    hardStop(console);
}

/// Folder up to the last separator, header without its extension.
void splitName(const std::string& name, RunOptions& options) {
    const std::size_t separator = name.find_last_of("\\/");
    const std::size_t headerStart = separator == std::string::npos ? 0 : separator + 1;
    const bool isIx = name.ends_with(IxExtension);
    const std::size_t extension = isIx ? IxExtension.size() : DataExtension.size();
    options.workingFolder = name.substr(0, headerStart);
    options.headerName =
        trimLeft(std::string_view(name).substr(headerStart, name.size() - headerStart - extension));
    options.dataFileBase = options.workingFolder + options.headerName;
    options.inputMode = isIx ? input_mode::IxDeck : input_mode::EclipseForm;
    options.ixExtract = isIx;
}

bool isFolder(const std::string& name) {
    std::error_code ignored;
    return std::filesystem::is_directory(name, ignored);
}

std::string withSeparator(const std::string& folder) {
    return folder.ends_with('/') ? folder : folder + "/";
}

/// The folder of a path, with its separator; blank for the present one.
std::string folderOf(const std::string& path) {
    return path.substr(0, path.size() - std::filesystem::path(path).filename().string().size());
}

bool isIxName(const std::string& name) {
    return name.ends_with(".afi") || name.ends_with(".Afi") || name.ends_with(".AFI");
}

/// Decks that lie where the name points: in the folder that it is, or beside the file that it is not.
std::vector<std::string> decksAt(const std::string& name) {
    const std::filesystem::path place(name);
    std::error_code failure;
    const std::filesystem::path folder = isFolder(name) ? place : place.parent_path();
    std::vector<std::string> decks;
    for (const auto& entry : std::filesystem::directory_iterator(folder.empty() ? "." : folder, failure)) {
        const std::string file = entry.path().filename().string();
        if (toUpper(entry.path().extension().string()) == DataExtension || isIxName(file))
            decks.push_back((folder / file).string());
    }
    std::sort(decks.begin(), decks.end());
    return decks;
}

/// Names the decks that may have been meant.
void tellDecksAt(const Console& console, const std::string& name) {
    const std::vector<std::string> decks = decksAt(name);
    if (decks.empty()) return;
    std::string text;
    for (std::size_t n = 0; n < std::min(decks.size(), MostDecksNamed); ++n) text += " " + decks[n];
    if (decks.size() > MostDecksNamed) text += fmt::format(" and {} more", decks.size() - MostDecksNamed);
    both(console, "Decks there ::{}", text);
}

/// A folder with some files of a three-file deck: what it lacks.
void tellMissingParts(const Console& console, const std::string& name) {
    if (!isFolder(name)) return;
    const std::vector<std::string> missing = missingParts(withSeparator(name));
    if (missing.size() == NativeDeckFiles.size()) return;
    for (const std::string& part : missing) both(console, "Not there for a three-file deck :: {}", part);
}

/// The deck as named, or with an extension added.
std::string namedDeck(const Console& console, const std::string& name) {
    for (const std::string_view extension : {std::string_view(), DataExtension, IxExtension,
                                             std::string_view(".Afi"), std::string_view(".AFI")}) {
        const std::string path = existingPath(name + std::string(extension));
        if (!path.empty()) return path;
    }
    both(console, "ERROR :: Cannot find file :: {}{}", name, isFolder(name) ? ", a folder" : "");
    tellMissingParts(console, name);
    tellDecksAt(console, name);
    hardStop(console);
}

std::string madeFolder(const Console& console, const std::string& name) {
    std::error_code failure;
    std::filesystem::create_directories(name, failure);
    if (!std::filesystem::is_directory(name)) {
        both(console, "ERROR :: Cannot make the folder for output :: {}", name);
        hardStop(console);
    }
    return withSeparator(name);
}

/// The folder of the three-file deck that a name stands for: the folder itself, or that of one of the three.
std::optional<std::string> nativeFolder(const std::string& name) {
    std::string folder;
    if (isFolder(name)) {
        folder = withSeparator(name);
    } else {
        const std::string file = std::filesystem::path(name).filename().string();
        if (std::find(NativeDeckFiles.begin(), NativeDeckFiles.end(), file) == NativeDeckFiles.end())
            return std::nullopt;
        folder = folderOf(name);
    }
    if (!missingParts(folder).empty()) return std::nullopt;
    return folder;
}

/// The name of a folder as its parent has it, also where it is called "." or "..".
std::string folderName(const std::string& folder) {
    std::error_code failure;
    std::filesystem::path whole = std::filesystem::canonical(folder.empty() ? "." : folder, failure);
    if (!whole.has_filename()) whole = whole.parent_path();
    return whole.has_filename() ? whole.filename().string() : "KVR";
}

/// Results stand under the name of the deck, beside it unless another folder is asked for.
void nameResults(const Console& console, const CommandLine& command, const std::string& header,
                 RunOptions& options) {
    options.headerName = header;
    options.outputPrefix = header;
    options.workingFolder = options.deckFolder;
    if (!command.outputFolder.empty() && !command.check)
        options.workingFolder = madeFolder(console, command.outputFolder);
    options.dataFileBase = options.workingFolder + options.headerName;
    options.useRelativePath = true;
}

/// A three-file deck has the name of its folder.
void takeNativeDeck(const Console& console, const CommandLine& command, const std::string& folder,
                    RunOptions& options) {
    options.deckFolder = folder;
    options.deckFile = folder + std::string(NativeDeckFiles.front());
    options.inputMode = input_mode::NativeDeck;
    nameResults(console, command, folderName(folder), options);
}

/// An .afi file whose run has left results is traced from them; one without is run first.
void takeNamedDeck(const Console& console, const CommandLine& command, RunOptions& options) {
    const bool isNamedFile = !existingPath(command.deck + std::string(DataExtension)).empty();
    const std::optional<std::string> folder = isNamedFile ? std::nullopt : nativeFolder(command.deck);
    if (folder) return takeNativeDeck(console, command, *folder, options);
    const std::string path = namedDeck(console, command.deck);
    options.deckFile = path;
    options.deckFolder = folderOf(path);
    nameResults(console, command, std::filesystem::path(path).stem().string(), options);
    options.inputMode = isIxName(path) ? input_mode::IxDeck : input_mode::EclipseForm;
    options.ixExtract = options.inputMode == input_mode::IxDeck &&
                        !exists(options.deckFolder + options.headerName + std::string(FirstRestart));
}

void findInput(const Console& console, RunOptions& options) {
    options.inputMode = input_mode::NativeDeck;
    if (detectNativeDeck(console, options) || detectKnownDeck(console, options)) return;

    lineToBoth(console, NotFound);
    lineToBoth(console, "ECLIPSE output data converter can be used");
    for (const std::string_view line : UsageText) lineToBoth(console, line);
    const std::string name = askForDeck(console);
    options.useRelativePath = true;
    splitName(name, options);
    for (const std::string_view line : OutlookText) lineToBoth(console, line);
}

}  // namespace

void detectInput(const Console& console, const CommandLine& command, RunOptions& options) {
    options.checkOnly = command.check;
    options.outsideAllowed = !isNamed(command) || command.allowOutside;
    if (isNamed(command)) return takeNamedDeck(console, command, options);
    findInput(console, options);
    options.deckFolder = options.workingFolder;
    if (command.outputFolder.empty() || command.check) return;
    options.deckFile = options.useRelativePath ? options.dataFileBase + std::string(DataExtension)
                                               : options.headerName + std::string(DataExtension);
    options.workingFolder = madeFolder(console, command.outputFolder);
    options.dataFileBase = options.workingFolder + options.headerName;
}

}  // namespace kvr
