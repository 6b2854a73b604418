#include "DataAccess/ServiceDataAccessPoint.h"

#include "Data/GenericObject.h"

#include <Poco/JSON/Object.h>
#include <Poco/URI.h>
#include <Poco/UUID.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace
{

using Orvi::Data::ElementBase;
using Orvi::Data::ElementGeneric;
using Orvi::Data::XObjectBase;
using Orvi::Data::XObjectId;
using Orvi::Service::ServiceDataAccessPoint;
using UpdateResult = Orvi::Service::ServiceDataAccessPoint::UpdateResult;
using Calls = std::vector<std::string>;

static_assert(std::is_move_constructible_v<UpdateResult>);
static_assert(std::is_move_assignable_v<UpdateResult>);
static_assert(!std::is_copy_constructible_v<UpdateResult>);
static_assert(!std::is_copy_assignable_v<UpdateResult>);

const std::string CAR = "c0000000-0000-4000-8000-000000000007";
const XObjectId CAR_ID = 7;

// Implements the forms a database has to provide by writing down each call, so that a test sees what
// the reduced forms of the base class turn into.
class RecordingAccessPoint : public ServiceDataAccessPoint
{
public:
    using ServiceDataAccessPoint::deleteElement;
    using ServiceDataAccessPoint::updateElement;

    Orvi::Data::ServiceBase::Ptr getService(const std::string& name) const override
    {
        calls.push_back("getService(" + name + ")");
        return {};
    }

    std::vector<Orvi::Data::ServiceBase::Ptr> getServices() const override
    {
        calls.emplace_back("getServices()");
        return {};
    }

    Orvi::Data::ResourceBase::Ptr getResource(const std::string& service,
                                              const std::string& resource) const override
    {
        calls.push_back("getResource(" + service + ", " + resource + ")");
        return {};
    }

    std::vector<Orvi::Data::ResourceBase::Ptr> getResources(const std::string& service) const override
    {
        calls.push_back("getResources(" + service + ")");
        return {};
    }

    ElementBase::Ptr getElement(XObjectId id) const override
    {
        calls.push_back("getElement(" + std::to_string(id) + ")");
        return found;
    }

    ElementBase::Ptr getElement(const Poco::URI& uri) const override
    {
        calls.push_back("getElement(" + uri.toString() + ")");
        return found;
    }

    ElementBase::Ptr getElement(const std::string& service, const std::string& resource,
                                const Poco::UUID& uuid) const override
    {
        calls.push_back("getElement(" + service + ", " + resource + ", uuid " + uuid.toString() + ")");
        return found;
    }

    ElementBase::Ptr getElement(const std::string& service, const std::string& resource,
                                const std::string& element) const override
    {
        calls.push_back("getElement(" + service + ", " + resource + ", " + element + ")");
        return found;
    }

    ElementCollection getElements(const std::string& service, const std::string& resource) const override
    {
        calls.push_back("getElements(" + service + ", " + resource + ")");
        return {};
    }

    UpdateResult insertElement(const ElementBase& element) override
    {
        calls.push_back("insertElement(" + element.getUri().toString() + ")");
        return UpdateResult(answer);
    }

    UpdateResult insertElement(const Poco::URI& uri, const Poco::JSON::Object::Ptr& json) override
    {
        calls.push_back("insertElement(" + uri.toString() + ")");
        lastJson = json;
        return UpdateResult(answer);
    }

    UpdateResult insertElement(const std::string& service, const std::string& resource,
                               const Poco::JSON::Object::Ptr& json) override
    {
        calls.push_back("insertElement(" + service + ", " + resource + ")");
        lastJson = json;
        return UpdateResult(answer);
    }

    UpdateResult updateElement(const ElementBase& element) override
    {
        calls.push_back("updateElement(" + element.getUri().toString() + ")");
        return UpdateResult(answer);
    }

    UpdateResult updateElement(XObjectId id, const Poco::JSON::Object::Ptr& json) override
    {
        calls.push_back("updateElement(" + std::to_string(id) + ")");
        lastJson = json;
        return UpdateResult(answer);
    }

    UpdateResult updateElement(const std::string& service, const std::string& resource,
                               const std::string& element, const Poco::JSON::Object::Ptr& json) override
    {
        calls.push_back("updateElement(" + service + ", " + resource + ", " + element + ")");
        lastJson = json;
        return UpdateResult(answer);
    }

    UpdateResult deleteElement(const ElementBase& element) override
    {
        calls.push_back("deleteElement(" + element.getUri().toString() + ")");
        deleted = &element;
        return UpdateResult(answer);
    }

    mutable Calls calls;
    ElementBase::Ptr found;
    UpdateResult::Value answer = UpdateResult::DUPLICATE;
    Poco::JSON::Object::Ptr lastJson;
    const ElementBase* deleted = nullptr;
};

class ServiceDataAccessPointTest : public testing::Test
{
protected:
    void storeCar() { sut.found = new ElementGeneric("fleet", "cars", "Volvo", Poco::UUID(CAR), CAR_ID); }

    RecordingAccessPoint sut;
    Poco::JSON::Object::Ptr json = new Poco::JSON::Object;
};

TEST(ServiceDataAccessPointUpdateResultTest, KeepsValueCreatedObjectAndMessage)
{
    const XObjectBase::Ptr created = new ElementGeneric("fleet", "cars", "Volvo", Poco::UUID(CAR), CAR_ID);

    const UpdateResult sut(UpdateResult::PROCESSING_ERROR, created, "disk full");

    EXPECT_EQ(sut.value(), UpdateResult::PROCESSING_ERROR);
    EXPECT_EQ(sut.created.get(), created.get());
    EXPECT_EQ(sut.message(), "disk full");
}

TEST(ServiceDataAccessPointUpdateResultTest, HasNoCreatedObjectAndAnEmptyMessageByDefault)
{
    const UpdateResult sut(UpdateResult::NOT_FOUND);

    EXPECT_EQ(sut.value(), UpdateResult::NOT_FOUND);
    EXPECT_TRUE(sut.created.isNull());
    EXPECT_EQ(sut.message(), "");
}

TEST(ServiceDataAccessPointUpdateResultTest, CountsOnlyOkAndNoUpdateAsSuccess)
{
    EXPECT_TRUE(UpdateResult(UpdateResult::OK).success());
    EXPECT_TRUE(UpdateResult(UpdateResult::NO_UPDATE).success());
    EXPECT_FALSE(UpdateResult(UpdateResult::NOT_FOUND).success());
    EXPECT_FALSE(UpdateResult(UpdateResult::DUPLICATE).success());
    EXPECT_FALSE(UpdateResult(UpdateResult::INVALID_REQUEST).success());
    EXPECT_FALSE(UpdateResult(UpdateResult::INVALID_OBJECT).success());
    EXPECT_FALSE(UpdateResult(UpdateResult::PROCESSING_ERROR).success());
}

TEST(ServiceDataAccessPointUpdateResultTest, HandsEverythingOverWhenMoved)
{
    const XObjectBase::Ptr created = new ElementGeneric("fleet", "cars", "Volvo", Poco::UUID(CAR), CAR_ID);
    UpdateResult source(UpdateResult::OK, created, "made");

    const UpdateResult sut(std::move(source));

    EXPECT_EQ(sut.value(), UpdateResult::OK);
    EXPECT_EQ(sut.created.get(), created.get());
    EXPECT_EQ(sut.message(), "made");
}

TEST(ServiceDataAccessPointUpdateResultTest, TakesEverythingOverWhenMoveAssigned)
{
    UpdateResult sut(UpdateResult::NOT_FOUND);

    sut = UpdateResult(UpdateResult::NO_UPDATE, {}, "same");

    EXPECT_EQ(sut.value(), UpdateResult::NO_UPDATE);
    EXPECT_TRUE(sut.created.isNull());
    EXPECT_EQ(sut.message(), "same");
}

TEST_F(ServiceDataAccessPointTest, UpdateByUriOfAnObjectGoesToTheUpdateByNames)
{
    const UpdateResult result = sut.updateElement(Poco::URI("/fleet/cars/" + CAR), json);

    EXPECT_EQ(result.value(), UpdateResult::DUPLICATE);
    EXPECT_EQ(sut.calls, Calls{"updateElement(fleet, cars, " + CAR + ")"});
    EXPECT_EQ(sut.lastJson.get(), json.get());
}

TEST_F(ServiceDataAccessPointTest, UpdateByUriOfAResourceIsAnInvalidRequest)
{
    const UpdateResult result = sut.updateElement(Poco::URI("/fleet/cars"), json);

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_EQ(result.message(), "");
    EXPECT_EQ(sut.calls, Calls{});
}

TEST_F(ServiceDataAccessPointTest, UpdateByUriOfAKeywordIsAnInvalidRequest)
{
    const UpdateResult result = sut.updateElement(Poco::URI("/fleet/cars/$id"), json);

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_EQ(sut.calls, Calls{});
}

TEST_F(ServiceDataAccessPointTest, UpdateByUuidGoesToTheUpdateByNamesWithTheUuidText)
{
    sut.answer = UpdateResult::NO_UPDATE;

    const UpdateResult result = sut.updateElement("fleet", "cars", Poco::UUID(CAR), json);

    EXPECT_EQ(result.value(), UpdateResult::NO_UPDATE);
    EXPECT_EQ(sut.calls, Calls{"updateElement(fleet, cars, " + CAR + ")"});
    EXPECT_EQ(sut.lastJson.get(), json.get());
}

TEST_F(ServiceDataAccessPointTest, DeleteByIdOfAMissingObjectIsNotFound)
{
    const UpdateResult result = sut.deleteElement(CAR_ID);

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
    EXPECT_EQ(result.message(), "");
    EXPECT_EQ(sut.calls, Calls{"getElement(7)"});
}

TEST_F(ServiceDataAccessPointTest, DeleteByIdDeletesTheObjectFoundForTheId)
{
    storeCar();

    const UpdateResult result = sut.deleteElement(CAR_ID);

    EXPECT_EQ(result.value(), UpdateResult::DUPLICATE);
    EXPECT_EQ(sut.calls, (Calls{"getElement(7)", "deleteElement(/fleet/cars/" + CAR + ")"}));
    EXPECT_EQ(sut.deleted, sut.found.get());
}

TEST_F(ServiceDataAccessPointTest, DeleteByUriOfAnObjectGoesToTheDeleteByNames)
{
    storeCar();
    sut.answer = UpdateResult::OK;

    const UpdateResult result = sut.deleteElement(Poco::URI("/fleet/cars/" + CAR));

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.calls,
              (Calls{"getElement(fleet, cars, " + CAR + ")", "deleteElement(/fleet/cars/" + CAR + ")"}));
    EXPECT_EQ(sut.deleted, sut.found.get());
}

TEST_F(ServiceDataAccessPointTest, DeleteByUriOfAMissingObjectIsNotFound)
{
    const UpdateResult result = sut.deleteElement(Poco::URI("/fleet/cars/" + CAR));

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
    EXPECT_EQ(sut.calls, Calls{"getElement(fleet, cars, " + CAR + ")"});
}

TEST_F(ServiceDataAccessPointTest, DeleteByUriOfAResourceIsAnInvalidRequest)
{
    storeCar();

    const UpdateResult result = sut.deleteElement(Poco::URI("/fleet/cars"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_EQ(sut.calls, Calls{});
}

TEST_F(ServiceDataAccessPointTest, DeleteByUriOfAServiceIsAnInvalidRequest)
{
    storeCar();

    const UpdateResult result = sut.deleteElement(Poco::URI("/fleet"));

    EXPECT_EQ(result.value(), UpdateResult::INVALID_REQUEST);
    EXPECT_EQ(sut.calls, Calls{});
}

TEST_F(ServiceDataAccessPointTest, DeleteByUuidLooksTheObjectUpByTheUuidText)
{
    storeCar();
    sut.answer = UpdateResult::PROCESSING_ERROR;

    const UpdateResult result = sut.deleteElement("fleet", "cars", Poco::UUID(CAR));

    EXPECT_EQ(result.value(), UpdateResult::PROCESSING_ERROR);
    EXPECT_EQ(sut.calls,
              (Calls{"getElement(fleet, cars, " + CAR + ")", "deleteElement(/fleet/cars/" + CAR + ")"}));
}

TEST_F(ServiceDataAccessPointTest, DeleteByNamesDeletesTheObjectFoundForTheNames)
{
    storeCar();
    sut.answer = UpdateResult::OK;

    const UpdateResult result = sut.deleteElement("fleet", "cars", CAR);

    EXPECT_EQ(result.value(), UpdateResult::OK);
    EXPECT_EQ(sut.calls,
              (Calls{"getElement(fleet, cars, " + CAR + ")", "deleteElement(/fleet/cars/" + CAR + ")"}));
    EXPECT_EQ(sut.deleted, sut.found.get());
}

TEST_F(ServiceDataAccessPointTest, DeleteByNamesOfAMissingObjectIsNotFound)
{
    const UpdateResult result = sut.deleteElement("fleet", "cars", CAR);

    EXPECT_EQ(result.value(), UpdateResult::NOT_FOUND);
    EXPECT_EQ(sut.calls, Calls{"getElement(fleet, cars, " + CAR + ")"});
}

} // namespace
