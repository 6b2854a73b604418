#pragma once

#include "IUncopyable.h"

#include <Poco/Notification.h>

namespace Orvi::Util
{

/// A unit of work for the worker thread. The worker calls processData() and then destroyData(), and
/// releases the message afterwards.
class DataMessageBase : public IUncopyable, public Poco::Notification
{
public:
    using Ptr = Poco::AutoPtr<DataMessageBase>;

    virtual void processData() = 0;
    /// Does the work; runs on the worker thread.

    virtual void destroyData();
    /// Runs after processData(), also when that threw; does nothing by default.

protected:
    ~DataMessageBase() override;
};

} // namespace Orvi::Util
