#pragma once

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace kvr {

/// One zone of a grid plot file, as the strict parser below reads it.
struct PlotZone {
    std::string title;
    std::vector<std::string> variables;
    int i = 0, j = 0, k = 0;       // node counts of an ordered zone
    long nodes = 0, elements = 0;  // of a brick zone
    double time = 0.0;
    std::vector<int> cellCentred;              // variable numbers
    std::vector<std::vector<double>> columns;  // one per variable
    std::vector<std::vector<long>> bricks;     // node numbers of each element
};

/// Reads block zones until the text ends. Anything unexpected throws: a missing line, a count that does
/// not fit, a value that is no number.
class PlotFileParser {
public:
    explicit PlotFileParser(const std::string& text) : in_(text) {}

    std::vector<PlotZone> zones() {
        std::vector<PlotZone> all;
        while ((in_ >> std::ws) && in_.peek() != std::char_traits<char>::eof()) all.push_back(zone());
        return all;
    }

private:
    std::string line(const std::string& start) {
        std::string text;
        if (!std::getline(in_, text)) throw std::runtime_error("file ends, wanted " + start);
        if (text.rfind(start, 0) != 0) throw std::runtime_error("wanted " + start + ", found " + text);
        return text.substr(start.size());
    }
    static std::vector<std::string> split(const std::string& text) {
        std::vector<std::string> parts;
        std::istringstream stream(text);
        for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
        return parts;
    }
    static long numberBehind(const std::string& text, const std::string& key) {
        const std::size_t at = text.find(key);
        if (at == std::string::npos) throw std::runtime_error("no " + key + " in " + text);
        return std::strtol(text.c_str() + at + key.size(), nullptr, 10);
    }
    std::vector<double> numbers(long count) {
        std::vector<double> values(static_cast<std::size_t>(count));
        for (double& value : values)
            if (!(in_ >> value)) throw std::runtime_error("too few numbers");
        return values;
    }
    void zoneLine(PlotZone& zone) {
        const std::string text = line("Zone ");
        if (text.find("DATAPACKING=BLOCK") == std::string::npos) throw std::runtime_error("not a block zone");
        if (text.find("ZONETYPE=FEBRICK") != std::string::npos) {
            zone.nodes = numberBehind(text, "N =");
            zone.elements = numberBehind(text, "E=");
            return;
        }
        zone.i = static_cast<int>(numberBehind(text, "i ="));
        zone.j = static_cast<int>(numberBehind(text, "j="));
        zone.k = static_cast<int>(numberBehind(text, "k="));
        zone.nodes = static_cast<long>(zone.i) * zone.j * zone.k;
        zone.elements = static_cast<long>(zone.i - 1) * (zone.j - 1) * (zone.k - 1);
    }
    void locations(PlotZone& zone) {
        const std::string text = line("VARLOCATION=(");
        if (text.back() != ')') throw std::runtime_error("open location list");
        for (const std::string& part : split(text.substr(0, text.size() - 1))) {
            if (part.substr(part.find('=')) != "=CELLCENTERED") throw std::runtime_error("location " + part);
            zone.cellCentred.push_back(std::atoi(part.c_str()));
        }
    }
    PlotZone zone() {
        PlotZone zone;
        zone.title = line("TITLE=");
        zone.variables = split(line("VARIABLES= "));
        zoneLine(zone);
        if (in_.peek() == 'S') zone.time = std::strtod(line("SOLUTIONTIME = ").c_str(), nullptr);
        locations(zone);
        for (std::size_t v = 1; v <= zone.variables.size(); ++v) {
            bool centred = false;
            for (const int number : zone.cellCentred) centred = centred || number == static_cast<int>(v);
            zone.columns.push_back(numbers(centred ? zone.elements : zone.nodes));
        }
        if (zone.i == 0)
            for (long e = 0; e < zone.elements; ++e) {
                std::vector<long> brick;
                for (const double node : numbers(8)) brick.push_back(static_cast<long>(node));
                zone.bricks.push_back(brick);
            }
        return zone;
    }

    std::istringstream in_;
};

}  // namespace kvr
