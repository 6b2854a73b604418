#pragma once

#include "TestSupport/LocalHttpServer.h"

#include <Poco/Net/HTTPResponse.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/HTTPServerResponse.h>
#include <Poco/Types.h>

#include <map>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace ServiceDB::Test
{

/// A service registry on 127.0.0.1, on a port the OS picks, that speaks the registry's HTTP/JSON protocol
/// and records every request it receives. The n-th registration gets the id idOf(n).
class TestServiceRegistry
{
public:
    struct Request
    {
        std::string method;
        std::string path;
        std::string body;
    };

    struct Answer
    {
        Poco::Net::HTTPResponse::HTTPStatus status;
        std::string location;
        /// Sent as the Location header unless empty.
        std::string body;
    };

    static const std::string PATH;
    /// "/registry/services".

    TestServiceRegistry();
    ~TestServiceRegistry();

    TestServiceRegistry(const TestServiceRegistry&) = delete;
    TestServiceRegistry& operator=(const TestServiceRegistry&) = delete;

    Poco::UInt16 port() const;

    static std::string idOf(int number);
    /// The id of the registry's number-th registration, counting from 1.

    std::string add(const std::string& name, const std::string& host, Poco::UInt16 port);
    /// Registers a service as another process would have, without a request; gives its id.

    void acceptDuplicates();
    /// From now on, a service of the name, host and port of a registered one is registered once more.

    void answerPostOf(const std::string& name, const Answer& answer);
    /// The POST of the service of that name gets this answer, and the service is not registered.

    void answerDeleteOf(const std::string& id, const Answer& answer);
    /// The DELETE of that id gets this answer, and nothing is removed.

    std::vector<Request> requests() const;
    /// The requests received, oldest first.

    std::vector<std::string> registrations() const;
    /// What is registered, oldest first, each as "<id> <name> <host>:<port>".

private:
    class Handler;
    class HandlerFactory;

    struct Registration
    {
        std::string id;
        std::string name;
        std::string host;
        Poco::UInt16 port;
    };

    void handle(Poco::Net::HTTPServerRequest& request, Poco::Net::HTTPServerResponse& response);
    Answer answerPost(const std::string& body);
    Answer answerDelete(const std::string& path);
    std::string store(const std::string& name, const std::string& host, Poco::UInt16 port);

    mutable std::mutex m_mutex;
    std::vector<Request> m_requests;
    std::vector<Registration> m_registrations;
    std::map<std::string, Answer> m_postAnswers;
    std::map<std::string, Answer> m_deleteAnswers;
    bool m_acceptDuplicates = false;
    int m_registered = 0;
    std::unique_ptr<LocalHttpServer> m_server;
};

bool operator==(const TestServiceRegistry::Request& left, const TestServiceRegistry::Request& right);

std::ostream& operator<<(std::ostream& out, const TestServiceRegistry::Request& request);
/// "METHOD path body", for readable test failures.

} // namespace ServiceDB::Test
