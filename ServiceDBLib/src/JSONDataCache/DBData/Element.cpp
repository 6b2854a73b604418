#include "JSONDataCache/DBData/Element.h"

namespace Orvi::DBData
{

Element::Element(Resource& owner)
    : parent(owner)
{
}

Element::~Element() = default;

} // namespace Orvi::DBData
