#include "BundledDefinitions.h"

#include <Poco/File.h>
#include <Poco/FileStream.h>
#include <Poco/TemporaryFile.h>

#include <gtest/gtest.h>

#include <string>

namespace
{

using Orvi::Example::BundledDefinitions;

const std::string INSTALLED = "../share/servicedb/example";
const std::string SOURCE = "/src/examples/definitions";

class BundledDefinitionsTest : public ::testing::Test
{
protected:
    Poco::TemporaryFile prefix;
    std::string root = prefix.path();
    std::string executable = root + "/bin/servicedb-example";

    void SetUp() override { Poco::File(root + "/bin").createDirectories(); }
};

TEST_F(BundledDefinitionsTest, TakesTheInstalledFolderBesideTheExecutableWhenItExists)
{
    Poco::File(root + "/share/servicedb/example").createDirectories();

    EXPECT_EQ(BundledDefinitions::directory(executable, INSTALLED, SOURCE),
              root + "/share/servicedb/example");
}

TEST_F(BundledDefinitionsTest, TakesTheSourceFolderWhenNothingIsInstalledBesideTheExecutable)
{
    EXPECT_EQ(BundledDefinitions::directory(executable, INSTALLED, SOURCE), SOURCE);
}

TEST_F(BundledDefinitionsTest, TakesTheSourceFolderWhenTheInstalledPathIsAFile)
{
    Poco::File(root + "/share/servicedb").createDirectories();
    Poco::FileOutputStream(root + "/share/servicedb/example").close();

    EXPECT_EQ(BundledDefinitions::directory(executable, INSTALLED, SOURCE), SOURCE);
}

TEST_F(BundledDefinitionsTest, TakesTheSourceFolderWhenTheExecutableIsUnknown)
{
    EXPECT_EQ(BundledDefinitions::directory("", INSTALLED, SOURCE), SOURCE);
}

TEST_F(BundledDefinitionsTest, TakesTheSourceFolderForARunningProgramThatIsNotInstalled)
{
    EXPECT_EQ(BundledDefinitions::directory("../no-such-folder/servicedb/example", SOURCE), SOURCE);
}

} // namespace
