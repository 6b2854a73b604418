#include "JSONDataCache/DBData/Endpoint.h"

#include "TestSupport/LogCapture.h"

#include <Poco/JSON/Object.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::Endpoint;
using ServiceDB::Test::LogCapture;
using Lines = std::vector<std::string>;
using Names = std::vector<std::string>;

const std::string MISSING_LINE = "Warning: Write operation denied! Missing attribute ";
const std::string FORBIDDEN_LINE =
    "Warning: Write operation denied! Request contains updates for forbidden attributes";
const std::string ELEMENT_DELETE_LINE = "Warning: Delete operation denied! Element deletion is not allowed";
const std::string ATTRIBUTE_DELETE_LINE =
    "Warning: Delete operation denied! Request tries to remove attributes that must not be deleted";

Attribute::Ptr makeAttribute(const std::string& name)
{
    return new Attribute(name);
}

Endpoint globalRule(bool get, bool post, bool del)
{
    Endpoint rule;
    rule.setGet(get);
    rule.setPost(post);
    rule.setDelete(del);
    return rule;
}

Endpoint boundRule(const std::string& name, bool get, bool post, bool del, bool required = false)
{
    Endpoint rule = globalRule(get, post, del);
    rule.setRequired(required);
    rule.setAttribute(makeAttribute(name));
    return rule;
}

Endpoint postRule(const std::string& name, bool required = false)
{
    return boundRule(name, false, true, false, required);
}

Endpoint deleteRule(const std::string& name)
{
    return boundRule(name, false, false, true);
}

TEST(Endpoint, AllowsNothingAndIsGlobalAfterConstruction)
{
    const Endpoint sut;

    EXPECT_FALSE(sut.isGet());
    EXPECT_FALSE(sut.isPost());
    EXPECT_FALSE(sut.isDelete());
    EXPECT_FALSE(sut.isRequired());
    EXPECT_TRUE(sut.isGlobal());
    EXPECT_TRUE(sut.getAttribute().isNull());
}

TEST(Endpoint, SetsEachFlagOnItsOwn)
{
    Endpoint sut;

    sut.setGet(true);
    EXPECT_TRUE(sut.isGet());
    EXPECT_FALSE(sut.isPost() || sut.isDelete() || sut.isRequired());

    sut.setPost(true);
    EXPECT_TRUE(sut.isPost());
    EXPECT_FALSE(sut.isDelete() || sut.isRequired());

    sut.setDelete(true);
    EXPECT_TRUE(sut.isDelete());
    EXPECT_FALSE(sut.isRequired());

    sut.setRequired(true);
    EXPECT_TRUE(sut.isRequired());

    sut.setGet(false);
    EXPECT_FALSE(sut.isGet());
    EXPECT_TRUE(sut.isPost() && sut.isDelete() && sut.isRequired());
}

TEST(Endpoint, IsBoundOnceItHasAnAttribute)
{
    Endpoint sut;
    const Attribute::Ptr attribute = makeAttribute("speed");

    sut.setAttribute(attribute);

    EXPECT_FALSE(sut.isGlobal());
    EXPECT_EQ(sut.getAttribute().get(), attribute.get());
}

TEST(Endpoint, CopiesShareTheAttribute)
{
    Endpoint original;
    original.setRequired(true);
    original.setAttribute(makeAttribute("speed"));

    const Endpoint sut(original);

    EXPECT_TRUE(sut.isRequired());
    EXPECT_EQ(sut.getAttribute().get(), original.getAttribute().get());
}

TEST(Endpoint, GivesWritableAccessToItsAttributePointer)
{
    Endpoint sut;

    sut.getAttribute() = makeAttribute("rpm");

    EXPECT_EQ(sut.getAttribute()->getName(), "rpm");
    EXPECT_FALSE(sut.isGlobal());
}

TEST(Endpoint, AllowsGetByAGlobalGetRule)
{
    const std::vector<Endpoint> rules{boundRule("speed", true, false, false), globalRule(true, false, false)};

    EXPECT_TRUE(Endpoint::checkGetAllowed(rules));
}

TEST(Endpoint, RefusesGetWithOnlyAttributeBoundGetRules)
{
    const std::vector<Endpoint> rules{boundRule("speed", true, false, false),
                                      boundRule("rpm", true, true, true)};
    LogCapture capture;

    const bool allowed = Endpoint::checkGetAllowed(rules);

    EXPECT_FALSE(allowed);
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(Endpoint, RefusesGetWhenTheGlobalRuleDoesNotAllowIt)
{
    const std::vector<Endpoint> rules{globalRule(false, true, true)};

    EXPECT_FALSE(Endpoint::checkGetAllowed(rules));
}

TEST(Endpoint, RefusesEveryCheckOnAnEmptyRuleListWithoutALogLine)
{
    const std::vector<Endpoint> rules;
    LogCapture capture;
    bool missing = true;
    bool forbidden = true;

    EXPECT_FALSE(Endpoint::checkGetAllowed(rules));
    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, Names{"speed"}, missing, forbidden));
    EXPECT_FALSE(missing);
    EXPECT_FALSE(forbidden);
    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, Names{}, missing, forbidden));
    EXPECT_FALSE(Endpoint::checkDeleteAllowed(rules, Names{}));
    EXPECT_FALSE(Endpoint::checkDeleteAllowed(rules, Names{"speed"}));
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(Endpoint, AllowsAnyNamesByAGlobalPostRuleFirst)
{
    const std::vector<Endpoint> rules{globalRule(false, true, false), postRule("speed", true)};
    LogCapture capture;
    bool missing = true;
    bool forbidden = true;

    EXPECT_TRUE(Endpoint::checkPostAllowed(rules, Names{"rpm", "gear", "rpm"}, missing, forbidden));
    EXPECT_FALSE(missing);
    EXPECT_FALSE(forbidden);
    EXPECT_TRUE(Endpoint::checkPostAllowed(rules, Names{}, missing, forbidden));
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(Endpoint, RefusesAMissingRequiredAttributeBeforeTheGlobalPostRule)
{
    const std::vector<Endpoint> rules{postRule("speed", true), globalRule(false, true, false)};
    LogCapture capture;
    bool missing = false;
    bool forbidden = true;

    const bool allowed = Endpoint::checkPostAllowed(rules, Names{"rpm"}, missing, forbidden);

    EXPECT_FALSE(allowed);
    EXPECT_TRUE(missing);
    EXPECT_FALSE(forbidden);
    EXPECT_EQ(capture.lines(), Lines{MISSING_LINE + "speed"});
}

TEST(Endpoint, SkipsRulesWithoutPostOnTheWayToTheGlobalPostRule)
{
    const std::vector<Endpoint> rules{boundRule("speed", true, false, true, true),
                                      globalRule(true, false, true), globalRule(false, true, false)};
    bool missing = true;
    bool forbidden = true;

    EXPECT_TRUE(Endpoint::checkPostAllowed(rules, Names{"rpm"}, missing, forbidden));
    EXPECT_FALSE(missing);
    EXPECT_FALSE(forbidden);
}

TEST(Endpoint, AllowsPostOfExactlyTheNamesWithRules)
{
    const std::vector<Endpoint> rules{postRule("speed", true), postRule("rpm"), postRule("gear")};
    LogCapture capture;
    bool missing = true;
    bool forbidden = true;

    const bool allowed = Endpoint::checkPostAllowed(rules, Names{"rpm", "speed"}, missing, forbidden);

    EXPECT_TRUE(allowed);
    EXPECT_FALSE(missing);
    EXPECT_FALSE(forbidden);
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(Endpoint, RefusesPostOfANameWithoutRuleAsForbidden)
{
    const std::vector<Endpoint> rules{postRule("a")};
    LogCapture capture;
    bool missing = true;
    bool forbidden = false;

    const bool allowed = Endpoint::checkPostAllowed(rules, Names{"a", "b"}, missing, forbidden);

    EXPECT_FALSE(allowed);
    EXPECT_FALSE(missing);
    EXPECT_TRUE(forbidden);
    EXPECT_EQ(capture.lines(), Lines{FORBIDDEN_LINE});
}

TEST(Endpoint, RefusesPostWithAMissingRequiredAttributeWhateverElseMatches)
{
    const std::vector<Endpoint> rules{postRule("a"), postRule("b"), postRule("c", true)};
    LogCapture capture;
    bool missing = false;
    bool forbidden = true;

    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, Names{"a", "b"}, missing, forbidden));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(forbidden);
    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, Names{"a"}, missing, forbidden));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, Names{"x"}, missing, forbidden));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(forbidden);
    EXPECT_EQ(capture.lines(), (Lines{MISSING_LINE + "c", MISSING_LINE + "c", MISSING_LINE + "c"}));
}

TEST(Endpoint, RefusesPostOfOneNameTwiceAsForbidden)
{
    const std::vector<Endpoint> rules{postRule("speed")};
    LogCapture capture;
    bool missing = true;
    bool forbidden = false;

    const bool allowed = Endpoint::checkPostAllowed(rules, Names{"speed", "speed"}, missing, forbidden);

    EXPECT_FALSE(allowed);
    EXPECT_FALSE(missing);
    EXPECT_TRUE(forbidden);
    EXPECT_EQ(capture.lines(), Lines{FORBIDDEN_LINE});
}

TEST(Endpoint, CountsEachMatchingRuleOnceForANameGivenTwice)
{
    const std::vector<Endpoint> rules{postRule("speed"), postRule("speed")};
    bool missing = true;
    bool forbidden = true;

    EXPECT_TRUE(Endpoint::checkPostAllowed(rules, Names{"speed", "speed"}, missing, forbidden));
    EXPECT_FALSE(missing);
    EXPECT_FALSE(forbidden);
}

TEST(Endpoint, AllowsPostWhenMoreRulesMatchThanNamesAreGiven)
{
    const std::vector<Endpoint> rules{postRule("speed"), postRule("speed")};
    bool missing = true;
    bool forbidden = true;

    EXPECT_TRUE(Endpoint::checkPostAllowed(rules, Names{"speed"}, missing, forbidden));
    EXPECT_FALSE(missing);
    EXPECT_FALSE(forbidden);
}

TEST(Endpoint, RefusesPostWithoutNamesAndOnlyOptionalRulesAsForbidden)
{
    const std::vector<Endpoint> rules{postRule("speed"), postRule("rpm")};
    LogCapture capture;
    bool missing = true;
    bool forbidden = false;

    const bool allowed = Endpoint::checkPostAllowed(rules, Names{}, missing, forbidden);

    EXPECT_FALSE(allowed);
    EXPECT_FALSE(missing);
    EXPECT_TRUE(forbidden);
    EXPECT_EQ(capture.lines(), Lines{FORBIDDEN_LINE});
}

TEST(Endpoint, RefusesPostWithoutAnyPostRuleAsForbidden)
{
    const std::vector<Endpoint> rules{globalRule(true, false, true), boundRule("speed", true, false, true)};
    LogCapture capture;
    bool missing = true;
    bool forbidden = false;

    const bool allowed = Endpoint::checkPostAllowed(rules, Names{"speed"}, missing, forbidden);

    EXPECT_FALSE(allowed);
    EXPECT_FALSE(missing);
    EXPECT_TRUE(forbidden);
    EXPECT_EQ(capture.lines(), Lines{FORBIDDEN_LINE});
}

TEST(Endpoint, ChecksPostOnTheKeysOfAJsonObject)
{
    const std::vector<Endpoint> rules{postRule("speed", true), postRule("rpm")};
    Poco::JSON::Object allowedBody(0);
    allowedBody.set("speed", 12);
    allowedBody.set("rpm", 800);
    Poco::JSON::Object forbiddenBody(0);
    forbiddenBody.set("speed", 12);
    forbiddenBody.set("gear", 3);
    Poco::JSON::Object incompleteBody(0);
    incompleteBody.set("rpm", 800);
    LogCapture capture;
    bool missing = true;
    bool forbidden = true;

    EXPECT_TRUE(Endpoint::checkPostAllowed(rules, allowedBody, missing, forbidden));
    EXPECT_FALSE(missing || forbidden);
    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, forbiddenBody, missing, forbidden));
    EXPECT_FALSE(missing);
    EXPECT_TRUE(forbidden);
    EXPECT_FALSE(Endpoint::checkPostAllowed(rules, incompleteBody, missing, forbidden));
    EXPECT_TRUE(missing);
    EXPECT_FALSE(forbidden);
    EXPECT_EQ(capture.lines(), (Lines{FORBIDDEN_LINE, MISSING_LINE + "speed"}));
}

TEST(Endpoint, AllowsDeletingTheElementByAGlobalDeleteRule)
{
    const std::vector<Endpoint> rules{deleteRule("speed"), globalRule(false, false, true)};
    LogCapture capture;

    EXPECT_TRUE(Endpoint::checkDeleteAllowed(rules, Names{}));
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(Endpoint, RefusesDeletingTheElementWithOnlyAttributeBoundDeleteRules)
{
    const std::vector<Endpoint> rules{deleteRule("speed"), deleteRule("rpm"), globalRule(true, true, false)};
    LogCapture capture;

    const bool allowed = Endpoint::checkDeleteAllowed(rules, Names{});

    EXPECT_FALSE(allowed);
    EXPECT_EQ(capture.lines(), Lines{ELEMENT_DELETE_LINE});
}

TEST(Endpoint, RefusesDeletingAnAttributeByAGlobalDeleteRuleAlone)
{
    const std::vector<Endpoint> rules{globalRule(false, false, true)};
    LogCapture capture;

    const bool allowed = Endpoint::checkDeleteAllowed(rules, Names{"a"});

    EXPECT_FALSE(allowed);
    EXPECT_EQ(capture.lines(), Lines{ATTRIBUTE_DELETE_LINE});
}

TEST(Endpoint, RefusesDeletingTwoAttributesWithARuleForOneOnly)
{
    const std::vector<Endpoint> rules{deleteRule("a"), globalRule(false, false, true), postRule("b")};
    LogCapture capture;

    const bool allowed = Endpoint::checkDeleteAllowed(rules, Names{"a", "b"});

    EXPECT_FALSE(allowed);
    EXPECT_EQ(capture.lines(), Lines{ATTRIBUTE_DELETE_LINE});
}

TEST(Endpoint, AllowsDeletingTwoAttributesWithARuleForEach)
{
    const std::vector<Endpoint> rules{deleteRule("b"), deleteRule("c"), deleteRule("a")};
    LogCapture capture;

    EXPECT_TRUE(Endpoint::checkDeleteAllowed(rules, Names{"a", "b"}));
    EXPECT_EQ(capture.lines(), Lines());
}

TEST(Endpoint, RefusesDeletingOneAttributeTwiceWithOneRule)
{
    const std::vector<Endpoint> rules{deleteRule("a")};
    LogCapture capture;

    const bool allowed = Endpoint::checkDeleteAllowed(rules, Names{"a", "a"});

    EXPECT_FALSE(allowed);
    EXPECT_EQ(capture.lines(), Lines{ATTRIBUTE_DELETE_LINE});
}

TEST(Endpoint, RefusesDeletionWhenMoreRulesMatchThanNamesAreGiven)
{
    const std::vector<Endpoint> rules{deleteRule("a"), deleteRule("a")};
    LogCapture capture;

    const bool allowed = Endpoint::checkDeleteAllowed(rules, Names{"a"});

    EXPECT_FALSE(allowed);
    EXPECT_EQ(capture.lines(), Lines{ATTRIBUTE_DELETE_LINE});
}

} // namespace
