#pragma once

#include "JSONDataCache/DBData/Service.h"

#include <string>
#include <vector>

namespace Orvi::Loader
{

/// Builds the services of a process from service definition files, one service a file (the format is
/// described in docs/service-definition.md). Every load is all or nothing: the services are built
/// aside and added to the map only when every given definition is valid, so a failed load leaves the
/// map as it was. Each element gets a table id above every element id already in the map, and each
/// service and resource a random UUID unless its definition gives one. Every element has the string
/// attributes "id", "name" and "uri", whether its definition declares them or not.
class SchemaLoader
{
public:
    void loadFile(const std::string& path, DBData::ServiceMap& services) const;
    /// Loads the service defined in the file; the path names the file in error messages.

    void loadFiles(const std::vector<std::string>& paths, DBData::ServiceMap& services) const;
    /// Loads the services of all files, or none of them if any file fails.

    void loadText(const std::string& text, const std::string& sourceName, DBData::ServiceMap& services) const;
    /// Loads the service defined in the text; the source name stands for the file in error messages.
    /// Raises SchemaError for a malformed definition or a service name that the map already holds.

private:
    static std::string readFile(const std::string& path);
    static void merge(DBData::ServiceMap& scratch, DBData::ServiceMap& services);
};

} // namespace Orvi::Loader
