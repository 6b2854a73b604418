#include "Command/RequestBase.h"

#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/Query/FilterParameter.h"
#include "Command/Query/Paging.h"

#include <Poco/Exception.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Orvi::Command;

namespace
{

RequestBase request(const std::string& address)
{
    return RequestBase(UrlPath(Poco::URI(address)));
}

// Opens the protected way to replace the address, as the concrete requests use it.
class ReaddressableRequest : public RequestBase
{
public:
    using RequestBase::RequestBase;
    using RequestBase::setUrlPath;
};

} // namespace

TEST(RequestBase, HasAnInvalidAddressAndNoCriteriaByDefault)
{
    const RequestBase sut;

    EXPECT_FALSE(sut.getUrlPath().isValid());
    EXPECT_EQ(sut.getUri().toString(), "");
    EXPECT_FALSE(sut.hasAnyCriteria());
    EXPECT_FALSE(sut.hasRenderCriteria());
    EXPECT_FALSE(sut.hasSearchCriteria());
    EXPECT_EQ(sut.getExpansionLevel(), 0U);
}

TEST(RequestBase, KeepsItsAddress)
{
    const RequestBase sut = request("/cabin/lights/l1");

    EXPECT_EQ(sut.getUri().getPath(), "/cabin/lights/l1");
    EXPECT_EQ(sut.getUrlPath().getCharacteristic(), UrlPath::SERVICE_RESOURCE_OBJECT);
    EXPECT_EQ(sut.getUrlPath().getElement(), "l1");
}

TEST(RequestBase, HasNoCriteriaWithoutAQuery)
{
    const RequestBase sut = request("/cabin/lights");

    EXPECT_FALSE(sut.hasAnyCriteria());
    EXPECT_FALSE(sut.hasFieldsCriteria());
    EXPECT_FALSE(sut.hasPropertyExpandCriteria());
    EXPECT_FALSE(sut.hasFreetextCriteria());
    EXPECT_FALSE(sut.hasAttributeCriteria());
}

TEST(RequestBase, TellsAFieldSelection)
{
    const RequestBase sut = request("/cabin/lights?$fields=level");

    EXPECT_TRUE(sut.hasAnyCriteria());
    EXPECT_TRUE(sut.hasRenderCriteria());
    EXPECT_TRUE(sut.hasFieldsCriteria());
    EXPECT_FALSE(sut.hasSearchCriteria());
}

TEST(RequestBase, TellsAnExpansionByNamesButNotByLevel)
{
    const RequestBase byNames = request("/cabin/lights?$expand=zone");
    const RequestBase byLevel = request("/cabin/lights?$expand=2");

    EXPECT_TRUE(byNames.hasPropertyExpandCriteria());
    EXPECT_FALSE(byLevel.hasPropertyExpandCriteria());
    EXPECT_TRUE(byLevel.hasRenderCriteria());
    EXPECT_FALSE(byLevel.hasFieldsCriteria());
}

TEST(RequestBase, GivesTheExpansionLevel)
{
    EXPECT_EQ(request("/cabin/lights?$expand=3").getExpansionLevel(), 3U);
    EXPECT_EQ(request("/cabin/lights?$expand=zone,seat").getExpansionLevel(), 1U);
    EXPECT_EQ(request("/cabin/lights?$fields=zone").getExpansionLevel(), 0U);
}

TEST(RequestBase, TellsAFreeTextSearch)
{
    const RequestBase sut = request("/cabin/lights?$q=front");

    EXPECT_TRUE(sut.hasSearchCriteria());
    EXPECT_TRUE(sut.hasFreetextCriteria());
    EXPECT_FALSE(sut.hasAttributeCriteria());
    EXPECT_FALSE(sut.hasRenderCriteria());
}

TEST(RequestBase, TellsAnAttributeSearch)
{
    const RequestBase sut = request("/cabin/lights?zone=front,rear");

    EXPECT_TRUE(sut.hasSearchCriteria());
    EXPECT_TRUE(sut.hasAttributeCriteria());
    EXPECT_FALSE(sut.hasFreetextCriteria());
}

TEST(RequestBase, CountsPagingAndSortingAsRenderCriteria)
{
    EXPECT_TRUE(request("/cabin/lights?$limit=5").hasRenderCriteria());
    EXPECT_TRUE(request("/cabin/lights?$sortby=level").hasRenderCriteria());
}

TEST(RequestBase, DecodesTheQueryBeforeParsingIt)
{
    const RequestBase sut = request("/cabin/lights?%24fields=level&name=front%2Crear");

    std::vector<Poco::SharedPtr<AttributeValueSearch>> searches;
    RequestBase::extractCriteria(searches, sut.getSearchCriteria());
    ASSERT_EQ(searches.size(), 1U);
    EXPECT_EQ(searches[0]->getSearchValues(), (std::vector<std::string>{"front", "rear"}));
    EXPECT_TRUE(sut.hasFieldsCriteria());
}

TEST(RequestBase, RefusesAMalformedQuery)
{
    try
    {
        request("/cabin/lights?$limit=abc");
        ADD_FAILURE() << "no exception";
    }
    catch (const Poco::URISyntaxException& exception)
    {
        EXPECT_EQ(exception.displayText(), "Bad URI syntax: invalid value of $limit: abc");
    }
}

TEST(RequestBase, HasNoCriteriaForAQueryThatDoesNotDecode)
{
    const RequestBase sut = request("/cabin/lights?$limit=%zz");

    EXPECT_FALSE(sut.getUrlPath().isValid());
    EXPECT_FALSE(sut.hasAnyCriteria());
}

TEST(RequestBase, TakesANewAddressWithItsCriteria)
{
    ReaddressableRequest sut(UrlPath(Poco::URI("/cabin/lights?$q=x")));

    sut.setUrlPath(UrlPath(Poco::URI("/cabin/seats?$fields=heat")));

    EXPECT_EQ(sut.getUrlPath().getResource(), "seats");
    EXPECT_TRUE(sut.hasFieldsCriteria());
    EXPECT_FALSE(sut.hasSearchCriteria());
}

TEST(RequestBase, StaysAsItWasWhenANewAddressIsMalformed)
{
    ReaddressableRequest sut(UrlPath(Poco::URI("/cabin/lights?$q=x")));

    EXPECT_THROW(sut.setUrlPath(UrlPath(Poco::URI("/cabin/seats?$expand=7"))), Poco::URISyntaxException);

    EXPECT_EQ(sut.getUrlPath().getResource(), "lights");
    EXPECT_TRUE(sut.hasFreetextCriteria());
    EXPECT_FALSE(sut.hasRenderCriteria());
}

TEST(RequestBase, ExtractsNothingFromARequestWithoutCriteria)
{
    const RequestBase sut = request("/cabin/lights");
    std::vector<Poco::SharedPtr<AttributeValueSearch>> searches{new AttributeValueSearch("kept", "1")};
    std::vector<Poco::SharedPtr<FilterParameter>> filters;

    RequestBase::extractCriteria(searches, sut.getSearchCriteria());
    sut.extractCriteria(filters, sut.getRenderCriteria());

    ASSERT_EQ(searches.size(), 1U);
    EXPECT_EQ(searches[0]->getAttributeName(), "kept");
    EXPECT_TRUE(filters.empty());
}

TEST(RequestBase, AppendsTheCriteriaOfOneClassInOrder)
{
    const RequestBase sut = request("/cabin/lights?zone=front&$q=x&level=3");
    std::vector<Poco::SharedPtr<AttributeValueSearch>> searches{new AttributeValueSearch("kept", "1")};

    RequestBase::extractCriteria(searches, sut.getSearchCriteria());

    ASSERT_EQ(searches.size(), 3U);
    EXPECT_EQ(searches[0]->getAttributeName(), "kept");
    EXPECT_EQ(searches[1]->getAttributeName(), "zone");
    EXPECT_EQ(searches[2]->getAttributeName(), "level");
}

TEST(RequestBase, AppendsAnEmptyPointerForEachEntryThatIsEmptyOrOfAnotherClass)
{
    RenderCriteriaMap map;
    map[queryCollectionKey<FilterParameter>()] = {new FilterParameter("a"), new Paging(), nullptr,
                                                  new FilterParameter("b")};
    std::vector<Poco::SharedPtr<FilterParameter>> filters;

    RequestBase::extractCriteria(filters, map);

    ASSERT_EQ(filters.size(), 4U);
    EXPECT_EQ(filters[0]->getFields().front().getName(), "a");
    EXPECT_TRUE(filters[1].isNull());
    EXPECT_TRUE(filters[2].isNull());
    EXPECT_EQ(filters[3]->getFields().front().getName(), "b");
}

TEST(RequestBase, ExtractsTheFreeTextSearchUnderItsOwnKey)
{
    const RequestBase sut = request("/cabin/lights?zone=front&$q=lamp");
    std::vector<Poco::SharedPtr<AnyValueSearch>> searches;

    RequestBase::extractCriteria(searches, sut.getSearchCriteria());

    ASSERT_EQ(searches.size(), 1U);
    EXPECT_EQ(searches[0]->getQueryValue(), "lamp");
}

TEST(RequestBase, SharesItsCriteriaWithACopy)
{
    const RequestBase original = request("/cabin/lights?$fields=level&zone=front");

    const RequestBase sut(original);

    EXPECT_EQ(sut.getUri().toString(), original.getUri().toString());
    EXPECT_TRUE(sut.hasFieldsCriteria());
    EXPECT_TRUE(sut.hasAttributeCriteria());
}
