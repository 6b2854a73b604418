#pragma once

namespace Orvi::DataLayer
{

/// Where a JSON object that enters an object comes from.
struct JSONProcessingContext
{
    enum Enum : int
    {
        InputContext_POST_On_Element = 0,
        /// A user's POST addressed at one existing object.
        InputContext_POST_On_Resource = 1,
        /// A user's POST addressed at a resource, which creates an object.
        InputContext_IPC = 2,
        /// Values from a data handler: null removes a value, a scalar appends to an array, and an
        /// integer names a referenced object by its id.
        InputContext_POST_On_Element_Cache_Only = 3
        /// Like a POST on an object, but the change stays in the cache.
    };
};

} // namespace Orvi::DataLayer
