// The query parser as the server meets it: a request line's method and target into an HttpRequest, whose
// criteria are then used as an answer would use them.
#include "Command/HttpRequest.h"
#include "Command/Query/AnyValueSearch.h"
#include "Command/Query/AttributeValueSearch.h"
#include "Command/Query/ExpandParameter.h"
#include "Command/Query/Paging.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Exception.h>
#include <Poco/Net/HTTPServerRequest.h>
#include <Poco/Net/SocketAddress.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace
{

using Orvi::Command::AnyValueSearch;
using Orvi::Command::AttributeValueSearch;
using Orvi::Command::ExpandParameter;
using Orvi::Command::HttpRequest;
using Orvi::Command::Paging;

// Just enough of a server request for HttpRequest, which reads method and target only.
class RequestLine : public Poco::Net::HTTPServerRequest
{
public:
    RequestLine(const std::string& method, const std::string& target)
    {
        setMethod(method);
        setURI(target);
    }

    std::istream& stream() override { return m_body; }
    const Poco::Net::SocketAddress& clientAddress() const override { return m_address; }
    const Poco::Net::SocketAddress& serverAddress() const override { return m_address; }
    const Poco::Net::HTTPServerParams& serverParams() const override
    {
        throw Poco::NotImplementedException("serverParams");
    }
    Poco::Net::HTTPServerResponse& response() const override
    {
        throw Poco::NotImplementedException("response");
    }
    bool secure() const override { return false; }

private:
    std::istringstream m_body;
    Poco::Net::SocketAddress m_address;
};

void require(bool condition, const char* what)
{
    if (!condition)
    {
        std::fprintf(stderr, "HttpRequestFuzzer: %s\n", what);
        std::abort();
    }
}

// Every value a search was built from must find itself, wildcards and all.
template <class Search>
void checkSearches(const HttpRequest& request)
{
    std::vector<Poco::SharedPtr<Search>> searches;
    HttpRequest::extractCriteria(searches, request.getSearchCriteria());
    for (const Poco::SharedPtr<Search>& search : searches)
    {
        if (search.isNull() || !search->isValid())
        {
            continue;
        }
        for (const std::string& value : search->getSearchValues())
        {
            require(search->match(value), "a search value must match itself");
            require(search->match(Poco::Dynamic::Var(value)), "a search value must match itself as a value");
        }
    }
}

void checkPaging(const HttpRequest& request)
{
    std::vector<Poco::SharedPtr<Paging>> pages;
    HttpRequest::extractCriteria(pages, request.getRenderCriteria());
    const std::vector<std::string> ids{"a0000003-0000-4000-8000-000000000000",
                                       "a0000003-0000-4000-8000-000000000001"};
    for (const Poco::SharedPtr<Paging>& paging : pages)
    {
        if (paging.isNull() || !paging->isValid())
        {
            continue;
        }
        for (std::size_t total = 0; total <= ids.size(); ++total)
        {
            const Paging::Window window =
                paging->locate(total, [&](std::size_t index) { return Poco::Dynamic::Var(ids.at(index)); });
            require(window.begin <= window.end && window.end <= total, "a page must lie within its list");
            require(window.end - window.begin <= static_cast<std::size_t>(paging->getLimit()),
                    "a page must not exceed its limit");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // "METHOD target", as on a request line; a line without a space is the target of a GET.
    const std::string line(reinterpret_cast<const char*>(data), size);
    const std::size_t space = line.find(' ');
    RequestLine server(space == std::string::npos ? "GET" : line.substr(0, space),
                       space == std::string::npos ? line : line.substr(space + 1));
    try
    {
        const HttpRequest request(server);
        request.hasFieldsCriteria();
        request.hasPropertyExpandCriteria();
        request.hasFreetextCriteria();
        request.hasAttributeCriteria();
        require(request.getExpansionLevel() <= ExpandParameter::EXPANSION_LEVEL_MAX,
                "an expansion deeper than the maximum must be refused");
        checkSearches<AnyValueSearch>(request);
        checkSearches<AttributeValueSearch>(request);
        checkPaging(request);
    }
    catch (const Poco::URISyntaxException&)
    {
        // The documented refusal of a target or query that does not parse.
    }
    return 0;
}
