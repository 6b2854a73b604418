#pragma once

#include <string>

namespace Orvi::Example
{

/// Finds the definition files a program comes with: in the data folder it was installed with, or else
/// in the source tree it was built from.
class BundledDefinitions
{
public:
    static std::string directory(const std::string& installed, const std::string& source);
    /// `installed` is relative to the folder of the running executable; it is taken when it exists,
    /// `source` otherwise.

    static std::string directory(const std::string& executable, const std::string& installed,
                                 const std::string& source);
    /// The same for the executable at the given path.
};

} // namespace Orvi::Example
