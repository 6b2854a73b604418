#include "Command/Query/QueryCollection.h"

#include "Command/Query/FilterParameter.h"
#include "Command/Query/Paging.h"

#include <gtest/gtest.h>

#include <typeinfo>

using Orvi::Command::FilterParameter;
using Orvi::Command::Paging;
using Orvi::Command::queryCollectionKey;

TEST(QueryCollection, KeysAClassByItsTypeName)
{
    const std::string key = queryCollectionKey<Paging>();

    EXPECT_EQ(key, typeid(Paging).name());
}

TEST(QueryCollection, KeysAnInstanceByItsRunTimeType)
{
    const Paging paging;
    const Orvi::Command::RenderCriterion& criterion = paging;

    const std::string key = queryCollectionKey(typeid(criterion));

    EXPECT_EQ(key, queryCollectionKey<Paging>());
    EXPECT_NE(key, queryCollectionKey<FilterParameter>());
}
