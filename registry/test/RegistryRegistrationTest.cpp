#include "OrviServiceRegistryRegistration.h"

#include "Data/MicroServiceInfo.h"
#include "LiveRegistryFixture.h"
#include "SchemaLoader/SchemaLoader.h"
#include "TestSupport/LogCapture.h"
#include "TestSupport/RegistryAddressGuard.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace
{

using ServiceDB::Registry::Test::Answer;
using ServiceDB::Test::LogCapture;

const std::string EXAMPLE_DEFINITIONS = SERVICEDB_EXAMPLE_DEFINITIONS_DIR;

/// A process with the example's cabin and audio services, announcing them at the registry served here.
class RegistryRegistration : public ServiceDB::Registry::Test::LiveRegistryFixture
{
protected:
    RegistryRegistration()
        : clientCache(clientServices, nullptr)
        , address(server->port())
    {
        Orvi::Loader::SchemaLoader().loadFiles(
            {EXAMPLE_DEFINITIONS + "/cabin.json", EXAMPLE_DEFINITIONS + "/audio.json"}, clientServices);
        sut.setCache(clientCache);
    }

    /// The ids that the registry assigned, by service name.
    std::map<std::string, std::string> registeredIds() const
    {
        std::map<std::string, std::string> ids;
        for (const Orvi::MicroServiceInfo& info : sut.getRegisteredServices())
        {
            ids[info.getName()] = info.getIdString();
        }
        return ids;
    }

    std::string clientIdOf(const std::string& service)
    {
        return clientCache.selectService(service)->getUUID();
    }

    static std::string audio(const std::string& uuid)
    {
        return "{\"categories\":[\"infotainment\"],\"description\":\"The music library of the head unit\","
               "\"host\":\"127.0.0.1\",\"id\":\"" +
               uuid + "\",\"name\":\"audio\",\"port\":8080,\"uri\":\"/registry/services/" + uuid +
               "\",\"versions\":[\"1.0.0\"]}";
    }

    static std::string cabin(const std::string& uuid)
    {
        return "{\"categories\":[\"comfort\",\"body\"],"
               "\"description\":\"Climate zones, seats, doors and windows of the passenger cabin\","
               "\"host\":\"127.0.0.1\",\"id\":\"" +
               uuid + "\",\"name\":\"cabin\",\"port\":8080,\"uri\":\"/registry/services/" + uuid +
               "\",\"versions\":[\"1.0.0\"]}";
    }

    /// The registry lists its registrations in the order they came, and the client sends its services in
    /// the order of their names.
    static std::string listOfBoth(const std::string& audioUuid, const std::string& cabinUuid)
    {
        return "200 {\"data\":[" + audio(audioUuid) + "," + cabin(cabinUuid) + "],\"status\":\"ok\"}";
    }

    static std::string emptyList() { return "200 {\"data\":[],\"status\":\"ok\"}"; }

    Orvi::DBData::ServiceMap clientServices;
    Orvi::Mapping::MappingServiceJSONDataCache clientCache;
    ServiceDB::Test::RegistryAddressGuard address;
    Orvi::Service::OrviServiceRegistryRegistration sut;
};

TEST_F(RegistryRegistration, RegistersEveryServiceOfTheCacheUnderTheIdsThatTheRegistryAssigned)
{
    const std::string audioBefore = clientIdOf("audio");
    const std::string cabinBefore = clientIdOf("cabin");

    const bool registered = sut.registerServicesImpl();

    EXPECT_TRUE(registered);
    std::map<std::string, std::string> ids = registeredIds();
    EXPECT_EQ(ids.size(), 2U);
    EXPECT_EQ(listing(), listOfBoth(ids["audio"], ids["cabin"]));
    EXPECT_NE(ids["audio"], audioBefore);
    EXPECT_NE(ids["cabin"], cabinBefore);
}

TEST_F(RegistryRegistration, MakesTheAssignedIdsTheUuidsOfTheServicesInItsCache)
{
    sut.registerServicesImpl();

    std::map<std::string, std::string> ids = registeredIds();
    EXPECT_EQ(clientIdOf("audio"), ids["audio"]);
    EXPECT_EQ(clientIdOf("cabin"), ids["cabin"]);
}

TEST_F(RegistryRegistration, FailsToRegisterTheSameServicesAgainAndSaysWhy)
{
    sut.registerServicesImpl();
    const std::string before = listing();
    Orvi::Service::OrviServiceRegistryRegistration again;
    again.setCache(clientCache);
    LogCapture log(Poco::Message::PRIO_ERROR);

    const bool registered = again.registerServicesImpl();

    EXPECT_FALSE(registered);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Error: Registering service 'audio' at service registry "
                                                     "127.0.0.1:" +
                                                         std::to_string(server->port()) +
                                                         " failed: answered 409 Conflict: service already "
                                                         "registered",
                                                     "Error: Registration of services failed."}));
    EXPECT_EQ(listing(), before);
    EXPECT_TRUE(again.getRegisteredServices().empty());
}

TEST_F(RegistryRegistration, TakesBackWhatItRegisteredWhenTheRegistryRefusesALaterService)
{
    const Answer cabinOfAnotherProcess = registerService("cabin", "127.0.0.1", 8080);
    const std::string before = listing();

    const bool registered = sut.registerServicesImpl();

    EXPECT_FALSE(registered);
    EXPECT_EQ(cabinOfAnotherProcess.status, 201);
    EXPECT_EQ(listing(), before);
}

TEST_F(RegistryRegistration, UnregistersEveryServiceItRegistered)
{
    sut.registerServicesImpl();

    const bool unregistered = sut.unregisterServices();

    EXPECT_TRUE(unregistered);
    EXPECT_EQ(listing(), emptyList());
    EXPECT_TRUE(sut.getRegisteredServices().empty());
}

} // namespace
