#pragma once

#include <memory>
#include <string>
#include <string_view>

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

/// Writes a command's output file whole. A regular file, or a missing one, is written beside
/// itself and renamed into place, so a failed run leaves the old one as it was; a device or a pipe
/// that is there already (/dev/null, a FIFO) is written into, as a rename would replace the node
/// itself. A directory is refused. On failure it prints "cannot write OUT: <reason>" and gives false.
bool writeOutputFile(const std::string& file, std::string_view text);

} // namespace velmo::cli
