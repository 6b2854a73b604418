#include "Command/HttpResponse.h"
#include "Command/RequestBase.h"
#include "Command/UrlPath.h"
#include "JSONDataCache/DBData/Attribute.h"
#include "JSONDataCache/DBData/AttributeType.h"
#include "JSONDataCache/DBData/AttributeValue.h"
#include "JSONDataCache/DBData/Element.h"
#include "JSONDataCache/DBData/Resource.h"
#include "JSONDataCache/DBData/Service.h"
#include "JSONDataCache/DBData/XObject.h"
#include "JSONDataCache/DBData/XObjectCache.h"
#include "JSONDataCache/JSONDataCache.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/Net/HTTPResponse.h>
#include <Poco/NumberFormatter.h>
#include <Poco/URI.h>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace
{

using Orvi::DBData::Attribute;
using Orvi::DBData::AttributeValue;
using Orvi::DBData::AttributeValuePtr;
using Orvi::DBData::XObject;
using Poco::Dynamic::Var;

const std::string SERVICE = "fleet";
const std::string RESOURCE = "cars";
const Poco::UInt16 PORT = 8090;
const std::vector<std::string> BRANDS{"Pontiac", "Chevrolet", "Cadillac", "VW",
                                      "Fiat",    "Volvo",     "Saab",     "Skoda"};

// The object of index i: its UUID, and its values as a client would post them.
std::string uuidOf(std::int64_t i)
{
    return "00000000-0000-4000-8000-" + Poco::NumberFormatter::formatHex(static_cast<Poco::UInt64>(i), 12);
}

std::string serialOf(std::int64_t i)
{
    return "SN" + Poco::NumberFormatter::format0(static_cast<Poco::Int64>(i), 8);
}

Var valueOf(const std::string& attribute, std::int64_t i)
{
    if (attribute == "name")
    {
        return "car-" + std::to_string(i);
    }
    if (attribute == "brand")
    {
        return BRANDS[static_cast<std::size_t>(i) % BRANDS.size()];
    }
    if (attribute == "model")
    {
        return "model-" + std::to_string(i % 50);
    }
    if (attribute == "serial")
    {
        return serialOf(i);
    }
    if (attribute == "seats")
    {
        return Attribute::Integer(2 + i % 6);
    }
    if (attribute == "mileage")
    {
        return static_cast<double>(i) * 1.5;
    }
    if (attribute == "electric")
    {
        return i % 3 == 0;
    }
    if (attribute == "tags")
    {
        return AttributeValue::ValueArrayPtr(
            new AttributeValue::ValueArray{Var("fleet"), Var("batch-" + std::to_string(i % 100))});
    }
    return Var();
}

/// One service with one resource whose element has ten attributes, and a cache on it.
class Fleet
{
public:
    Fleet()
        : m_cache(std::make_unique<Orvi::JSONDataCache::JSONDataCache>(m_services))
    {
        Orvi::DBData::Service::Ptr service = new Orvi::DBData::Service;
        service->setName(SERVICE);
        service->setPort(PORT);
        Orvi::DBData::Resource::Ptr resource = new Orvi::DBData::Resource(*service);
        resource->setName(RESOURCE);
        Orvi::DBData::Element::Ptr element = new Orvi::DBData::Element(*resource);
        element->setName("car");
        element->setDBID(1);
        Orvi::DBData::AttributeMap attributes;
        for (const auto& [name, type, isArray] :
             std::vector<std::tuple<std::string, Orvi::DBData::AttributeType, bool>>{
                 {"id", Orvi::DBData::AttrType_String, false},
                 {"name", Orvi::DBData::AttrType_String, false},
                 {"uri", Orvi::DBData::AttrType_String, false},
                 {"brand", Orvi::DBData::AttrType_String, false},
                 {"model", Orvi::DBData::AttrType_String, false},
                 {"serial", Orvi::DBData::AttrType_String, false},
                 {"seats", Orvi::DBData::AttrType_Integer, false},
                 {"mileage", Orvi::DBData::AttrType_Number, false},
                 {"electric", Orvi::DBData::AttrType_Boolean, false},
                 {"tags", Orvi::DBData::AttrType_String, true}})
        {
            attributes.emplace(name, new Attribute(name, type, isArray));
        }
        element->setAttributes(std::move(attributes));
        resource->setElement(element);
        service->addResource(resource);
        m_services[SERVICE] = service;
        m_element = element;
    }

    Orvi::JSONDataCache::JSONDataCache& cache() { return *m_cache; }

    const Orvi::DBData::Element::Ptr& element() const { return m_element; }

    // Creates the object and writes each value that is not set at creation, as a POST of a new object
    // does. False on the first refusal.
    bool insert(std::int64_t i)
    {
        XObject object((Orvi::DBData::Element::Ptr()));
        object.setId(Orvi::DBData::UUID(uuidOf(i)));
        if (!m_cache->insertXObject(SERVICE, RESOURCE, object))
        {
            return false;
        }
        for (AttributeValuePtr& cell : object.getAttributeValues())
        {
            if (Attribute::isDefaultAttribute(cell->getName()) && cell->getName() != "name")
            {
                continue;
            }
            if (!cell->setValue(valueOf(cell->getName(), i)) ||
                !m_cache->updateCacheAttributeValueById(*cell, false))
            {
                return false;
            }
        }
        return true;
    }

    // Writes one value of a stored object, as a POST of that member does.
    bool write(std::int64_t i, const std::string& attribute, const Var& value)
    {
        const XObject::Ptr object = m_cache->selectXObject(uuidOf(i), -1);
        if (object.isNull())
        {
            return false;
        }
        AttributeValuePtr cell = object->getValue(attribute);
        return !cell.isNull() && cell->setValue(value) &&
               m_cache->updateCacheAttributeValueById(*cell, false);
    }

    bool fill(std::int64_t count)
    {
        for (std::int64_t i = 0; i < count; ++i)
        {
            if (!insert(i))
            {
                return false;
            }
        }
        return true;
    }

private:
    Orvi::DBData::ServiceMap m_services;
    std::unique_ptr<Orvi::JSONDataCache::JSONDataCache> m_cache;
    Orvi::DBData::Element::Ptr m_element;
};

Orvi::Command::RequestBase requestFor(const std::string& address)
{
    return Orvi::Command::RequestBase(Orvi::Command::UrlPath(Poco::URI(address)));
}

// Answers the request in every iteration, as the worker does for a GET; the answer has to be 200.
void answerEach(benchmark::State& state, Fleet& fleet, const std::string& address)
{
    const Orvi::Command::RequestBase request = requestFor(address);
    {
        Orvi::Command::HttpResponse probe;
        if (fleet.cache().queryCache(request, probe, PORT) != Poco::Net::HTTPResponse::HTTP_OK)
        {
            state.SkipWithError(("no answer for " + address).c_str());
            return;
        }
    }
    for (auto _ : state)
    {
        Orvi::Command::HttpResponse response;
        benchmark::DoNotOptimize(fleet.cache().queryCache(request, response, PORT));
        // The body's bytes belong to the answer: some rows are written as text while they are queried.
        response.renderBody();
        benchmark::DoNotOptimize(response.getTextMsg().data());
    }
}

// Fills a fleet of state.range(0) objects and answers the address made for that count in every iteration.
template <typename AddressOf>
void answerEachInFleet(benchmark::State& state, AddressOf addressOf)
{
    const std::int64_t count = state.range(0);
    Fleet fleet;
    if (!fleet.fill(count))
    {
        state.SkipWithError("an insertion was refused");
        return;
    }
    answerEach(state, fleet, addressOf(count));
}

std::int64_t residentBytes()
{
    std::ifstream statm("/proc/self/statm");
    std::int64_t size = 0;
    std::int64_t resident = 0;
    statm >> size >> resident;
    return resident * static_cast<std::int64_t>(sysconf(_SC_PAGESIZE));
}

std::int64_t heapBytesInUse()
{
#ifdef __GLIBC__
    return static_cast<std::int64_t>(mallinfo2().uordblks);
#else
    return 0;
#endif
}

void BM_ObjectStoreInsertWithValues(benchmark::State& state)
{
    const std::int64_t count = state.range(0);
    for (auto _ : state)
    {
        state.PauseTiming();
        auto fleet = std::make_unique<Fleet>();
        state.ResumeTiming();
        if (!fleet->fill(count))
        {
            state.SkipWithError("an insertion was refused");
            return;
        }
        state.PauseTiming();
        fleet.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
}

void BM_ObjectStoreGetObject(benchmark::State& state)
{
    answerEachInFleet(state, [](std::int64_t count)
                      { return "/" + SERVICE + "/" + RESOURCE + "/" + uuidOf(count / 2); });
}

void BM_ObjectStoreGetResourcePageOf20(benchmark::State& state)
{
    answerEachInFleet(
        state, [](std::int64_t count)
        { return "/" + SERVICE + "/" + RESOURCE + "?$offset=" + std::to_string(count / 2) + "&$limit=20"; });
}

// Sorted by a number whose order differs from the order of the ids, descending.
void BM_ObjectStoreGetSortedPageOf20(benchmark::State& state)
{
    answerEachInFleet(state,
                      [](std::int64_t count)
                      {
                          return "/" + SERVICE + "/" + RESOURCE +
                                 "?$sortby=-mileage&$offset=" + std::to_string(count / 2) + "&$limit=20";
                      });
}

// Fills a fleet of state.range(0) objects and, in every iteration, changes one object's mileage before it
// answers the address made for that count: nothing kept for an earlier answer can serve.
template <typename AddressOf>
void answerEachAfterAChange(benchmark::State& state, AddressOf addressOf)
{
    const std::int64_t count = state.range(0);
    Fleet fleet;
    if (!fleet.fill(count))
    {
        state.SkipWithError("an insertion was refused");
        return;
    }
    const Orvi::Command::RequestBase request = requestFor(addressOf(count));
    double mileage = 0;
    for (auto _ : state)
    {
        mileage += 1;
        if (!fleet.write(count / 3, "mileage", mileage))
        {
            state.SkipWithError("the change was refused");
            return;
        }
        Orvi::Command::HttpResponse response;
        if (fleet.cache().queryCache(request, response, PORT) != Poco::Net::HTTPResponse::HTTP_OK)
        {
            state.SkipWithError("no answer");
            return;
        }
        response.renderBody();
        benchmark::DoNotOptimize(response.getTextMsg().data());
    }
}

// The same page, with one object's mileage changed before each request: the order cannot be kept.
void BM_ObjectStoreGetSortedPageOf20AfterAChange(benchmark::State& state)
{
    answerEachAfterAChange(state,
                           [](std::int64_t count)
                           {
                               return "/" + SERVICE + "/" + RESOURCE +
                                      "?$sortby=-mileage&$offset=" + std::to_string(count / 2) + "&$limit=20";
                           });
}

// A serial number is unique: the search finds one object, so the cost is that of the search.
void BM_ObjectStoreSearchByAttribute(benchmark::State& state)
{
    answerEachInFleet(state, [](std::int64_t count)
                      { return "/" + SERVICE + "/" + RESOURCE + "?serial=" + serialOf(count / 2); });
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// One brand in eight: a search whose answer is large, so that its cost is that of rendering.
void BM_ObjectStoreSearchWithAnEighthOfAllHits(benchmark::State& state)
{
    answerEachInFleet(state, [](std::int64_t) { return "/" + SERVICE + "/" + RESOURCE + "?brand=Volvo"; });
}

// The same search with one object's mileage changed before each request: no row written for an
// earlier answer can be kept.
void BM_ObjectStoreSearchWithAnEighthOfAllHitsAfterAChange(benchmark::State& state)
{
    answerEachAfterAChange(state,
                           [](std::int64_t) { return "/" + SERVICE + "/" + RESOURCE + "?brand=Volvo"; });
}

void BM_ObjectStoreSearchByFreeText(benchmark::State& state)
{
    answerEachInFleet(state, [](std::int64_t count)
                      { return "/" + SERVICE + "/" + RESOURCE + "?$q=" + serialOf(count / 2); });
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// Reports what filling a store keeps resident, in total and for each object. The filled store stays
// alive until both measurements are taken.
template <typename Filler>
void measureMemory(benchmark::State& state, Filler fill)
{
    const std::int64_t count = state.range(0);
    std::int64_t resident = 0;
    std::int64_t heap = 0;
    for (auto _ : state)
    {
        const std::int64_t residentBefore = residentBytes();
        const std::int64_t heapBefore = heapBytesInUse();
        const auto filled = fill(count);
        if (!filled)
        {
            state.SkipWithError("an insertion was refused");
            return;
        }
        resident = residentBytes() - residentBefore;
        heap = heapBytesInUse() - heapBefore;
    }
    state.counters["resident_bytes"] = static_cast<double>(resident);
    state.counters["resident_bytes_per_object"] = static_cast<double>(resident) / static_cast<double>(count);
    state.counters["heap_bytes"] = static_cast<double>(heap);
    state.counters["heap_bytes_per_object"] = static_cast<double>(heap) / static_cast<double>(count);
}

// The objects with their values, the element's registry and the attribute indexes.
void BM_ObjectStoreResidentMemory(benchmark::State& state)
{
    measureMemory(state,
                  [](std::int64_t count)
                  {
                      auto fleet = std::make_unique<Fleet>();
                      return fleet->fill(count) ? std::move(fleet) : nullptr;
                  });
}

// The same objects and values in a bare object store, without registry and indexes: the difference to
// the benchmark above is what the element keeps for searching.
void BM_ObjectStoreResidentMemoryWithoutIndexes(benchmark::State& state)
{
    const Fleet schema;
    measureMemory(state,
                  [&schema](std::int64_t count)
                  {
                      auto store = std::make_unique<Orvi::DBData::XObjectCache>();
                      for (std::int64_t i = 0; i < count; ++i)
                      {
                          const std::string uuid = uuidOf(i);
                          XObject object(schema.element());
                          object.setDBID(i + 1);
                          object.setId(Orvi::DBData::UUID(uuid));
                          Orvi::DBData::DbId cellId = 1;
                          for (const auto& [name, attribute] : schema.element()->getAttributes())
                          {
                              AttributeValuePtr cell(new AttributeValue(i + 1, attribute, cellId++));
                              const Var value = name == "id" ? Var(uuid)
                                                : name == "uri"
                                                    ? Var("/" + SERVICE + "/" + RESOURCE + "/" + uuid)
                                                    : valueOf(name, i);
                              if (!cell->setValue(value))
                              {
                                  return std::unique_ptr<Orvi::DBData::XObjectCache>();
                              }
                              object.getAttributeValues().push_back(cell);
                          }
                          if (!store->insertObject(object))
                          {
                              return std::unique_ptr<Orvi::DBData::XObjectCache>();
                          }
                      }
                      return store;
                  });
}

} // namespace

BENCHMARK(BM_ObjectStoreResidentMemory)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ObjectStoreResidentMemoryWithoutIndexes)
    ->Arg(100000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ObjectStoreInsertWithValues)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ObjectStoreGetObject)->Arg(1000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ObjectStoreGetResourcePageOf20)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ObjectStoreGetSortedPageOf20)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ObjectStoreGetSortedPageOf20AfterAChange)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ObjectStoreSearchByAttribute)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ObjectStoreSearchWithAnEighthOfAllHits)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ObjectStoreSearchWithAnEighthOfAllHitsAfterAChange)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ObjectStoreSearchByFreeText)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);
