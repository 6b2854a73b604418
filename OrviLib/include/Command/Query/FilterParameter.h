#pragma once

#include "Command/Query/FilterField.h"
#include "Command/Query/Paging.h"
#include "Command/Query/RenderCriterion.h"

#include <Poco/Dynamic/Var.h>
#include <Poco/JSON/Array.h>
#include <Poco/JSON/Object.h>
#include <Poco/SharedPtr.h>

#include <map>
#include <string>
#include <vector>

namespace Orvi::Command
{

/// The field selection of "$fields=a,b": objects keep only the named keys and always "id", "name" and
/// "uri", so that a reduced object can still be identified and followed.
class FilterParameter : public RenderCriterion
{
public:
    using FilterParameterCollection = std::map<std::string, Poco::SharedPtr<Paging>>;

    static const char FIELD_SEPARATOR;
    /// ',' between the names of "$fields".

    explicit FilterParameter(const std::string& queryValue);
    /// Reads "a,b"; invalid when the text or any name in it is empty.

    explicit FilterParameter(std::vector<FilterField> fields);
    /// Invalid when there is no field or a field without a name.

    ~FilterParameter() override;

    const std::vector<FilterField>& getFields() const { return m_filterFields; }
    /// The fields in the order given; a name given twice stands here twice.

    bool isSelected(const std::string& key) const;
    /// True for the named keys and the three identifying keys.

    Poco::Dynamic::Var renderField(const std::string& key, const Poco::Dynamic::Var& value) const;
    /// The value as the selection renders it: the field's page of a JSON array, else the value itself.

    void applyFilter(const Poco::JSON::Object& in, Poco::JSON::Object& out) const;
    /// Replaces out by the selected keys of in; in and out may be the same object.

    void applyFilter(const Poco::JSON::Array& in, Poco::JSON::Array& out) const;
    /// Replaces out by in with each object element filtered; other elements stay as they are. in and out
    /// may be the same array.

private:
    void collectFields();

    std::vector<FilterField> m_filterFields;
    FilterParameterCollection m_filterCollection;
};

} // namespace Orvi::Command
