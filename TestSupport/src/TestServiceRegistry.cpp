#include "TestSupport/TestServiceRegistry.h"

#include <Poco/Exception.h>
#include <Poco/JSON/Object.h>
#include <Poco/JSON/Parser.h>
#include <Poco/Net/HTTPRequest.h>
#include <Poco/Net/HTTPRequestHandler.h>
#include <Poco/Net/HTTPRequestHandlerFactory.h>
#include <Poco/NumberFormatter.h>
#include <Poco/StreamCopier.h>

#include <algorithm>
#include <ostream>

namespace ServiceDB::Test
{

namespace
{

using Status = Poco::Net::HTTPResponse::HTTPStatus;

const std::string OK_BODY = "{ \"status\" : \"ok\" }";

TestServiceRegistry::Answer error(Status status, const std::string& message)
{
    return {status, "",
            "{\"code\":" + std::to_string(static_cast<int>(status)) + ",\"message\":\"" + message +
                "\",\"status\":\"error\"}"};
}

} // namespace

const std::string TestServiceRegistry::PATH = "/registry/services";

class TestServiceRegistry::Handler : public Poco::Net::HTTPRequestHandler
{
public:
    explicit Handler(TestServiceRegistry& registry)
        : m_registry(registry)
    {
    }

    void handleRequest(Poco::Net::HTTPServerRequest& request,
                       Poco::Net::HTTPServerResponse& response) override
    {
        m_registry.handle(request, response);
    }

private:
    TestServiceRegistry& m_registry;
};

class TestServiceRegistry::HandlerFactory : public Poco::Net::HTTPRequestHandlerFactory
{
public:
    explicit HandlerFactory(TestServiceRegistry& registry)
        : m_registry(registry)
    {
    }

    Poco::Net::HTTPRequestHandler* createRequestHandler(const Poco::Net::HTTPServerRequest&) override
    {
        return new Handler(m_registry);
    }

private:
    TestServiceRegistry& m_registry;
};

TestServiceRegistry::TestServiceRegistry()
    : m_server(std::make_unique<LocalHttpServer>(new HandlerFactory(*this)))
{
}

// The server goes first, so that no request reaches a registry being torn down.
TestServiceRegistry::~TestServiceRegistry()
{
    m_server.reset();
}

Poco::UInt16 TestServiceRegistry::port() const
{
    return m_server->port();
}

std::string TestServiceRegistry::idOf(int number)
{
    return "5e000000-0000-4000-8000-" + Poco::NumberFormatter::format0(number, 12);
}

std::string TestServiceRegistry::add(const std::string& name, const std::string& host, Poco::UInt16 port)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return store(name, host, port);
}

void TestServiceRegistry::acceptDuplicates()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_acceptDuplicates = true;
}

void TestServiceRegistry::answerPostOf(const std::string& name, const Answer& answer)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_postAnswers[name] = answer;
}

void TestServiceRegistry::answerDeleteOf(const std::string& id, const Answer& answer)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_deleteAnswers[id] = answer;
}

std::vector<TestServiceRegistry::Request> TestServiceRegistry::requests() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

std::vector<std::string> TestServiceRegistry::registrations() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> result;
    for (const Registration& registration : m_registrations)
    {
        result.push_back(registration.id + " " + registration.name + " " + registration.host + ":" +
                         std::to_string(registration.port));
    }
    return result;
}

void TestServiceRegistry::handle(Poco::Net::HTTPServerRequest& request,
                                 Poco::Net::HTTPServerResponse& response)
{
    std::string body;
    Poco::StreamCopier::copyToString(request.stream(), body);

    Answer answer = error(Status::HTTP_NOT_FOUND, "no such resource");
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.push_back({request.getMethod(), request.getURI(), body});
        if (request.getMethod() == Poco::Net::HTTPRequest::HTTP_POST && request.getURI() == PATH)
        {
            answer = answerPost(body);
        }
        else if (request.getMethod() == Poco::Net::HTTPRequest::HTTP_DELETE &&
                 request.getURI().rfind(PATH + "/", 0) == 0)
        {
            answer = answerDelete(request.getURI());
        }
    }

    response.setStatusAndReason(answer.status);
    if (!answer.location.empty())
    {
        response.set("Location", answer.location);
    }
    response.setContentType("application/json");
    response.setContentLength(static_cast<std::streamsize>(answer.body.size()));
    response.send() << answer.body;
}

TestServiceRegistry::Answer TestServiceRegistry::answerPost(const std::string& body)
{
    std::string name;
    std::string host;
    Poco::UInt16 port = 0;
    try
    {
        const Poco::JSON::Object::Ptr service =
            Poco::JSON::Parser().parse(body).extract<Poco::JSON::Object::Ptr>();
        name = service->getValue<std::string>("name");
        host = service->getValue<std::string>("host");
        port = service->getValue<Poco::UInt16>("port");
    }
    catch (const Poco::Exception&)
    {
        return error(Status::HTTP_BAD_REQUEST, "not a service description");
    }

    const auto scripted = m_postAnswers.find(name);
    if (scripted != m_postAnswers.end())
    {
        return scripted->second;
    }
    const bool duplicate = std::any_of(m_registrations.begin(), m_registrations.end(),
                                       [&](const Registration& registration) {
                                           return registration.name == name && registration.host == host &&
                                                  registration.port == port;
                                       });
    if (duplicate && !m_acceptDuplicates)
    {
        return error(Status::HTTP_CONFLICT, "service already registered");
    }
    return {Status::HTTP_CREATED, PATH + "/" + store(name, host, port), OK_BODY};
}

TestServiceRegistry::Answer TestServiceRegistry::answerDelete(const std::string& path)
{
    const std::string id = path.substr(PATH.size() + 1);
    const auto scripted = m_deleteAnswers.find(id);
    if (scripted != m_deleteAnswers.end())
    {
        return scripted->second;
    }
    const auto found = std::find_if(m_registrations.begin(), m_registrations.end(),
                                    [&](const Registration& registration) { return registration.id == id; });
    if (found == m_registrations.end())
    {
        return error(Status::HTTP_NOT_FOUND, "service not registered");
    }
    m_registrations.erase(found);
    return {Status::HTTP_OK, "", OK_BODY};
}

std::string TestServiceRegistry::store(const std::string& name, const std::string& host, Poco::UInt16 port)
{
    const std::string id = idOf(++m_registered);
    m_registrations.push_back({id, name, host, port});
    return id;
}

bool operator==(const TestServiceRegistry::Request& left, const TestServiceRegistry::Request& right)
{
    return left.method == right.method && left.path == right.path && left.body == right.body;
}

std::ostream& operator<<(std::ostream& out, const TestServiceRegistry::Request& request)
{
    out << request.method << " " << request.path;
    if (!request.body.empty())
    {
        out << " " << request.body;
    }
    return out;
}

} // namespace ServiceDB::Test
