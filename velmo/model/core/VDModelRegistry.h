#pragma once

#include <vector>

namespace velmo {

class VDClass;

/// The library's model classes, in one explicit list: a static library's linker would drop
/// classes that register themselves. The classes of the decoder's fast table come first, in its
/// order; every new class adds one line to the list. It is defined with the document, the top
/// layer of the model, because it names classes of every layer.
std::vector<const VDClass*> registerModelClasses();

} // namespace velmo
