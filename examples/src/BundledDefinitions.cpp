#include "BundledDefinitions.h"

#include <Poco/File.h>
#include <Poco/Path.h>

#include <unistd.h>

#include <array>

namespace Orvi::Example
{

namespace
{

std::string runningExecutable()
{
    std::array<char, 4096> path{};
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size() - 1);
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

} // namespace

std::string BundledDefinitions::directory(const std::string& installed, const std::string& source)
{
    return directory(runningExecutable(), installed, source);
}

std::string BundledDefinitions::directory(const std::string& executable, const std::string& installed,
                                          const std::string& source)
{
    if (executable.empty())
    {
        return source;
    }
    Poco::Path candidate(Poco::Path(executable).parent(), Poco::Path(installed, Poco::Path::PATH_UNIX));
    candidate.makeDirectory();
    const Poco::File folder(candidate);
    if (!folder.exists() || !folder.isDirectory())
    {
        return source;
    }
    std::string found = candidate.toString(Poco::Path::PATH_UNIX);
    found.pop_back(); // the trailing slash, since callers append "/name"
    return found;
}

} // namespace Orvi::Example
