#include <velmora/ConditionList.h>

#include <utility>

namespace velmora {

std::shared_ptr<Condition> ConditionList::Add(std::shared_ptr<Condition> sCondition,
                                              const std::string& sKey) {
    return items_.Add(std::move(sCondition), sKey, IndexKey());
}

std::shared_ptr<Condition> ConditionList::Item(IndexKey vntIndexKey) const {
    return items_.Item(vntIndexKey);
}

int32_t ConditionList::Count() const {
    return items_.Count();
}

void ConditionList::Remove(IndexKey vntIndexKey) {
    items_.Remove(vntIndexKey);
}

ConditionList::const_iterator ConditionList::begin() const {
    return items_.begin();
}

ConditionList::const_iterator ConditionList::end() const {
    return items_.end();
}

}  // namespace velmora
