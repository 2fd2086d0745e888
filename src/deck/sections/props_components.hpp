#pragma once

#include "deck/sections/props.hpp"

namespace kvr {

// Handlers of the component keywords of PROPS: CNAMES, critical data, molecular weights, acentric factors,
// binary coefficients and compositions, read and held. In a deck without components their data are skipped.

inline constexpr double RankinePerKelvin = 1.8;

inline bool isMetric(const SectionReader& reader) {
    return reader.units->deck == DeckUnits::Metric;
}

void readCnames(SectionReader& reader, PropsRecords& records);
void readTcrit(SectionReader& reader, PropsRecords& records);
void readPcrit(SectionReader& reader, PropsRecords& records);
void readVcrit(SectionReader& reader, PropsRecords& records);
void readMw(SectionReader& reader, PropsRecords& records);
void readAcf(SectionReader& reader, PropsRecords& records);
void readZi(SectionReader& reader, PropsRecords& records);
void readBic(SectionReader& reader, PropsRecords& records);
void readZmfvd(SectionReader& reader, PropsRecords& records);

}  // namespace kvr
