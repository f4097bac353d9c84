#pragma once

#include <memory>
#include <string>

#include "velmo/model/core/VDModel.h"

namespace velmo::cli {

/// "-" as a file: standard input, or standard output where a file is written.
inline constexpr const char* kStandardStream = "-";

/// How messages name a document file: "standard input" for "-", else the path.
std::string documentName(const std::string& file);

/// Reads a document file ("-" for standard input) and decodes its top level. On failure it prints
/// a one-line message naming the file and saying why (the system's reason for a file that can't
/// be read, the offset for malformed JSON), sets `exitCode` (2 for an unreadable file or malformed
/// JSON, 1 when the top level isn't a model class) and gives nullptr.
std::shared_ptr<VDModel> readDocument(const std::string& file, int& exitCode);

} // namespace velmo::cli
