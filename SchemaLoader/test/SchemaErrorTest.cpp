#include "SchemaLoader/SchemaError.h"

#include <gtest/gtest.h>

#include <memory>

using Orvi::Loader::SchemaError;

TEST(SchemaError, IsADataFormatException)
{
    const SchemaError sut("cabin.json: port", "must be an integer between 0 and 65535");

    const Poco::DataFormatException* base = dynamic_cast<const Poco::DataFormatException*>(&sut);

    EXPECT_NE(base, nullptr);
}

TEST(SchemaError, JoinsSourceLocationAndReasonInItsMessage)
{
    const SchemaError sut("cabin.json: port", "must be an integer between 0 and 65535");

    EXPECT_EQ(sut.message(), "cabin.json: port: must be an integer between 0 and 65535");
}

TEST(SchemaError, NamesItselfAnInvalidServiceDefinition)
{
    const SchemaError sut("cabin.json: name", "is required");

    EXPECT_STREQ(sut.name(), "Invalid service definition");
    EXPECT_EQ(sut.displayText(), "Invalid service definition: cabin.json: name: is required");
}

TEST(SchemaError, KeepsItsClassWhenCloned)
{
    const SchemaError original("cabin.json", "cannot be read");

    const std::unique_ptr<Poco::Exception> sut(original.clone());

    EXPECT_NE(dynamic_cast<SchemaError*>(sut.get()), nullptr);
    EXPECT_EQ(sut->message(), "cabin.json: cannot be read");
}

TEST(SchemaError, RethrowsAsItsOwnClass)
{
    const SchemaError sut("cabin.json", "cannot be read");

    EXPECT_THROW(sut.rethrow(), SchemaError);
}
