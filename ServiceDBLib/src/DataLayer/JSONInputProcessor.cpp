#include "DataLayer/JSONInputProcessor.h"

#include "Logging/LogStream.h"

#include <Poco/Bugcheck.h>
#include <Poco/Exception.h>
#include <Poco/JSON/Array.h>

#include <typeinfo>
#include <utility>
#include <vector>

namespace Orvi::DataLayer
{

using Mapping::OperationResult;

namespace
{

// The first cell of that attribute name; an empty entry means a corrupt object.
DBData::AttributeValuePtr findCell(const DBData::AttributeValueList& cells, const std::string& name)
{
    for (const DBData::AttributeValuePtr& cell : cells)
    {
        if (cell.isNull())
        {
            poco_bugcheck_msg("Nullpointer in AttributeValue list");
        }
        if (cell->getName() == name)
        {
            return cell;
        }
    }
    return {};
}

// What a member does to its cell.
enum class Outcome
{
    Failed,
    Unchanged,
    Changed
};

} // namespace

JSONInputProcessor::~JSONInputProcessor() = default;

OperationResult::Enum JSONInputProcessor::processJSONValues(JSONProcessingContext::Enum ctx,
                                                            const std::string& servicename,
                                                            const std::string& resourcename,
                                                            DBData::XObject& xObject,
                                                            const Poco::JSON::Object* obj)
{
    JSONProcessingData processingData;
    processingData.pExtractionMap = new JSONExtractionMap_t;
    processingData.pObj = obj;
    return processJSONValues(ctx, servicename, resourcename, xObject, processingData);
}

OperationResult::Enum JSONInputProcessor::processJSONValues(JSONProcessingContext::Enum ctx,
                                                            const std::string& servicename,
                                                            const std::string& resourcename,
                                                            DBData::XObject& xObject,
                                                            JSONProcessingData& processingData)
{
    const int ctxNumber = static_cast<int>(ctx);
    if (xObject.getId().isEmpty() || xObject.getDBID() == DBData::aDBTableEntry::INVALID_DBID ||
        xObject.getElement().isNull())
    {
        LOG_ERROR("(" << ctxNumber << ") Incomplete xobject used for extraction");
        return OperationResult::ErrorOnUpdate;
    }
    if (processingData.pObj == nullptr)
    {
        LOG_ERROR("No JSON-Object provided.");
        return OperationResult::ErrorOnUpdate;
    }

    const std::string elementTypeName =
        servicename + "." + resourcename + "." + xObject.getElement()->getName();
    const DBData::AttributeValueList& attrvals = xObject.getAttributeValues();
    Poco::SharedPtr<JSONExtractionMap_t> resultmap(new JSONExtractionMap_t);
    const bool fromIpc = ctx == JSONProcessingContext::InputContext_IPC;

    for (const auto& [attrName, jsonValue] : *processingData.pObj)
    {
        try
        {
            DBData::AttributeValuePtr cell = findCell(attrvals, attrName);
            if (cell.isNull())
            {
                LOG_ERROR("processJSONValues: (" << ctxNumber << ") Could not find attribute " << attrName
                                                 << " for element type " << elementTypeName);
                return OperationResult::ErrorOnUpdate;
            }

            if (jsonValue.isEmpty())
            {
                if (!fromIpc)
                {
                    LOG_ERROR("processJSONValues: (" << ctxNumber << ") Failed to update attribute "
                                                     << attrName << " (" << elementTypeName
                                                     << ") with null value");
                    return OperationResult::ErrorOnUpdate;
                }
                if (!cell->hasValue())
                {
                    LOG_TRACE("processJSONValues Skip removal of attribute value "
                              << attrName << " (" << elementTypeName << ") because it's already empty.");
                    continue;
                }
                cell->clear();
                (*resultmap)[attrName] = cell;
                continue;
            }

            const bool checkForObjRefByDbId = fromIpc && cell->getType() == DBData::AttrType_Object;
            Poco::Dynamic::Var newValue;
            bool compare = cell->hasValue();

            if (jsonValue.isArray())
            {
                if (!cell->isArray())
                {
                    LOG_ERROR("processJSONValues: (" << ctxNumber << ") Unable to update attribute "
                                                     << attrName << " (" << elementTypeName
                                                     << ") with non-array value");
                    return OperationResult::ErrorOnUpdate;
                }
                if (jsonValue.type() != typeid(Poco::JSON::Array::Ptr))
                {
                    LOG_ERROR("processJSONValues: ("
                              << ctxNumber << ") Unable to handle array-format of new value for attribute "
                              << attrName << " (" << elementTypeName << ")");
                    return OperationResult::ErrorOnUpdate;
                }
                const Poco::JSON::Array::Ptr& jsonArray = jsonValue.extract<Poco::JSON::Array::Ptr>();
                Poco::SharedPtr<std::vector<Poco::Dynamic::Var>> newVec(new std::vector<Poco::Dynamic::Var>);
                newVec->reserve(jsonArray->size());
                for (std::size_t index = 0; index < jsonArray->size(); ++index)
                {
                    Poco::Dynamic::Var val = jsonArray->get(static_cast<unsigned int>(index));
                    if (val.isEmpty())
                    {
                        LOG_DEBUG("processJSONValues: Ignore empty array values.");
                        continue;
                    }
                    if (checkForObjRefByDbId && !resolveObjectRef(val))
                    {
                        LOG_ERROR("processJSONValues: (" << ctxNumber << ") Failed to update attribute "
                                                         << attrName << " (" << elementTypeName
                                                         << ") unknown object reference");
                        return OperationResult::ErrorOnUpdate;
                    }
                    if (!cell->convertAndCheckValue(val))
                    {
                        LOG_ERROR("processJSONValues: (" << ctxNumber << ") Failed to update array-attribute "
                                                         << attrName << " (" << elementTypeName
                                                         << ") with invalid value");
                        return OperationResult::ErrorOnUpdate;
                    }
                    newVec->push_back(std::move(val));
                }
                const bool emptyValue = newVec->empty();
                newValue = newVec;
                if (!compare && emptyValue)
                {
                    LOG_TRACE("processJSONValues No value change. Skip update of attribute value "
                              << attrName << " (" << elementTypeName << ").");
                    continue;
                }
            }
            else
            {
                newValue = jsonValue;
                if (checkForObjRefByDbId && !resolveObjectRef(newValue))
                {
                    LOG_ERROR("processJSONValues: Failed to resolve provided object reference!");
                    return OperationResult::ErrorOnUpdate;
                }
                if (!cell->isArray())
                {
                    if (!cell->convertAndCheckValue(newValue))
                    {
                        LOG_ERROR("processJSONValues: (" << ctxNumber << ") Failed to update attribute "
                                                         << attrName << " (" << elementTypeName
                                                         << ") with invalid value");
                        return OperationResult::ErrorOnUpdate;
                    }
                }
                else if (!fromIpc)
                {
                    LOG_ERROR("processJSONValues: (" << ctxNumber << ") Failed to update attribute "
                                                     << attrName << " (" << elementTypeName
                                                     << ") with non-array value");
                    return OperationResult::ErrorOnUpdate;
                }
                else
                {
                    if (!cell->appendArrayValue(newValue, true))
                    {
                        LOG_ERROR("processJSONValues: (2) Failed to append to attribute "
                                  << attrName << " (" << elementTypeName << ") an invalid value");
                        return OperationResult::ErrorOnUpdate;
                    }
                    // The extended array moves out of the cell, so that an append always counts as a change.
                    newValue.clear();
                    newValue.swap(cell->getValue());
                    compare = false;
                }
            }

            if (compare && cell->compareValue(newValue) == Util::CompareResult::EQUAL)
            {
                LOG_TRACE("processJSONValues No value change. Skip update of attribute value "
                          << attrName << " (" << elementTypeName << ").");
                continue;
            }
            newValue.swap(cell->getValue());
            (*resultmap)[attrName] = cell;
        }
        catch (const Poco::BugcheckException&)
        {
            throw;
        }
        catch (const Poco::Exception& e)
        {
            LOG_ERROR(servicename << "." << resourcename << "." << attrName
                                  << " - Caught exception: " << e.displayText());
            return OperationResult::ErrorOnUpdate;
        }
    }

    if (resultmap->empty())
    {
        LOG_TRACE("(" << ctxNumber << ") Update attribute values failed. No changes detected.");
        return OperationResult::ObjectUnchanged;
    }

    processingData.pExtractionMap = resultmap;
    const OperationResult::Enum result =
        processAttributeValues(ctx, servicename, resourcename, xObject, processingData);
    if (result == OperationResult::ErrorOnUpdate)
    {
        LOG_ERROR("(" << ctxNumber << ") Update of " << resultmap->size() << " attribute values failed.");
    }
    return result;
}

bool JSONInputProcessor::resolveObjectRef(Poco::Dynamic::Var& value)
{
    if (value.type() != typeid(long))
    {
        return true;
    }
    const DBData::XObject::Ptr object = resolveObjectReferenceByDbId(value.extract<long>());
    if (object.isNull())
    {
        return false;
    }
    value = object;
    return true;
}

} // namespace Orvi::DataLayer
