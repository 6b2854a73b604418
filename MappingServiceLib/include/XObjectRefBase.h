#pragma once

#include "IAttributeIdent.h"
#include "IUncopyable.h"

#include <Poco/Types.h>

#include <list>
#include <map>

namespace Orvi::Mapping
{

/// The references between mapped objects, by the handlers' object ids. An object can be named here
/// before it exists, so that its references can be completed when it arrives.
class XObjectRefBase : public Orvi::Util::IUncopyable
{
public:
    /// One reference: the attribute pointingFromObjectData of some object refers to the object
    /// pointingToId.
    class XObjectRefData
    {
    public:
        XObjectRefData(const IAttributeIdent* from, Poco::Int32 toId)
            : pointingFromObjectData(from)
            , pointingToId(toId)
        {
        }

        virtual ~XObjectRefData() = default;

        XObjectRefData(const XObjectRefData&) = delete;
        XObjectRefData& operator=(const XObjectRefData&) = delete;

        const IAttributeIdent* pointingFromObjectData;
        /// Not owned.

        const Poco::Int32 pointingToId;
    };

    using DependencyList = std::list<XObjectRefData*>;
    /// The entries under one object id: those that point to it and those that start from it.

    DependencyList getDependencyInfos(int objId) const;
    /// A copy of the list of the object id, or an empty list. The entries stay valid only as long as
    /// whoever filled the map keeps them.

    std::map<Poco::Int32, DependencyList> mapXObjectRefData;
    /// Filled by the application's subclass, which owns the entries.
};

inline XObjectRefBase::DependencyList XObjectRefBase::getDependencyInfos(int objId) const
{
    const auto it = mapXObjectRefData.find(objId);
    return it != mapXObjectRefData.end() ? it->second : DependencyList();
}

} // namespace Orvi::Mapping
