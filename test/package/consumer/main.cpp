// A user's program: builds a one-service catalogue and reads its root through the installed library.
#include "Command/HttpResponse.h"
#include "Command/RequestBase.h"
#include "Command/UrlPath.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/URI.h>

#include <iostream>

int main()
{
    Orvi::DBData::ServiceMap services;
    Orvi::DBData::Service::Ptr cabin = new Orvi::DBData::Service;
    cabin->setName("cabin");
    cabin->setPort(8080);
    services[cabin->getName()] = cabin;

    Orvi::JSONDataCache::JSONDataCache cache(services);
    const Orvi::Command::RequestBase request(Orvi::Command::UrlPath(Poco::URI("/")));
    Orvi::Command::HttpResponse response;

    const auto status = cache.queryCache(request, response, 8080);
    if (status != Poco::Net::HTTPResponse::HTTP_OK)
    {
        std::cerr << "unexpected status " << status << '\n';
        return 1;
    }
    std::cout << "consumer ok " << response.getBody() << '\n';
    return 0;
}
