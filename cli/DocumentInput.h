#pragma once

#include <memory>
#include <string>

#include "velmo/model/core/VDModel.h"

namespace velmo::cli {

/// Reads a document file and decodes its top level. On failure it prints a one-line message
/// naming the file (and the offset, for malformed JSON), sets `exitCode` (2 for an unreadable file
/// or malformed JSON, 1 when the top level isn't a model class) and gives nullptr.
std::shared_ptr<VDModel> readDocument(const std::string& file, int& exitCode);

} // namespace velmo::cli
