// The tables of a recording's file, as docs/recording.md describes them.
#ifndef TAVMIR_RECORDER_SCHEMA_H
#define TAVMIR_RECORDER_SCHEMA_H

#include <cstdint>

namespace tavmir::recorder
{

// PRAGMA application_id: "TVMR". PRAGMA user_version: the schema's version, counted up whenever a
// reader of the version before could misunderstand a file.
constexpr std::uint32_t kApplicationId = 0x54564D52;
constexpr int kSchemaVersion = 1;

// Everything below, to be run within one transaction.
extern const char kSchema[];

} // namespace tavmir::recorder

#endif
