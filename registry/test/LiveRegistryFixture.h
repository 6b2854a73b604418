#pragma once

#include "Mapping/MappingServiceSubscrTrigger.h"
#include "RegistryFixture.h"
#include "RegistryHandlerFactory.h"
#include "SubscriptionHandling/SubscriptionService.h"
#include "TestSupport/LocalHttpServer.h"

#include <memory>

namespace ServiceDB::Registry::Test
{

/// The registry as main() builds it, with the subscription service behind the same port as HTTP.
class LiveRegistryFixture : public RegistryFixture
{
protected:
    LiveRegistryFixture()
        : trigger(worker, &cache)
        , subscriptions(std::make_unique<Orvi::Service::SubscriptionService>(trigger))
        , server(std::make_unique<ServiceDB::Test::LocalHttpServer>(
              new Orvi::Registry::RegistryHandlerFactory(worker, cache, trigger, subscriptions.get())))
    {
        serveOn(server->port());
    }

    ~LiveRegistryFixture() override
    {
        // As main() stops: the server, then the subscription service, which may wait for the worker.
        server.reset();
        subscriptions.reset();
        worker.stop();
    }

    Orvi::Mapping::MappingServiceSubscrTrigger trigger;
    std::unique_ptr<Orvi::Service::SubscriptionService> subscriptions;
    std::unique_ptr<ServiceDB::Test::LocalHttpServer> server;
};

} // namespace ServiceDB::Registry::Test
