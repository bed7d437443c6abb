#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

namespace quorvane::rules {

template <class Fields> class RuleHandle;

// Holds records and is notified of their changes. Only lists of rules do (RuleList.h).
template <class Fields> class RuleHolder {
public:
    virtual ~RuleHolder() = default;

    // Called after `rule` was changed from the properties `before`, on the thread that changed it.
    virtual void ruleHasChanged(const RuleHandle<Fields>& rule, const Fields& before) noexcept = 0;
};

// The common part of both kinds of record: the identity of a rule, and its current value. A change replaces
// the value with a modified copy, so a value() taken before stays as it was.
//
// Properties and value() may be read from any thread. Everything else is for the one thread that also sets
// them. Setting throws std::bad_alloc when there is no memory for the copy; the record is then unchanged.
template <class Fields> class RuleHandle {
public:
    using Value = std::shared_ptr<const Fields>;

    RuleHandle(const RuleHandle&) = delete;
    RuleHandle& operator=(const RuleHandle&) = delete;

    Value value() const
    {
        const std::lock_guard lock(lockOf(this));
        return m_value;
    }

    // Sets all properties at once. Requires a value that is not null. Never throws. Setting the present value
    // is no change.
    void setValue(Value value) noexcept
    {
        if (value == m_value)
            return;
        {
            const std::lock_guard lock(lockOf(this));
            m_value.swap(value);
        }
        if (m_holder != nullptr)
            m_holder->ruleHasChanged(*this, *value);
        if (m_moreHolders) {
            for (RuleHolder<Fields>* holder : *m_moreHolders)
                holder->ruleHasChanged(*this, *value);
        }
    }

    // The same without lock or copy, valid until the record is changed.
    const Value& presentValue() const { return m_value; }
    const Fields& fields() const { return *m_value; }

    // Notifies `holder` of changes until it is removed: once for each time that it was added. It must outlive
    // that.
    void addHolder(RuleHolder<Fields>& holder) const
    {
        if (m_holder == nullptr) {
            m_holder = &holder;
            return;
        }
        if (!m_moreHolders)
            m_moreHolders = std::make_unique<Holders>();
        m_moreHolders->push_back(&holder);
    }
    // A holder for which `isIt` is true; null when there is none.
    template <class IsIt> RuleHolder<Fields>* holderWhere(const IsIt& isIt) const
    {
        if (m_holder != nullptr && isIt(*m_holder))
            return m_holder;
        if (!m_moreHolders)
            return nullptr;
        const auto found = std::find_if(
            m_moreHolders->begin(), m_moreHolders->end(), [&](const auto* holder) { return isIt(*holder); });
        return found == m_moreHolders->end() ? nullptr : *found;
    }
    void removeHolder(const RuleHolder<Fields>& holder) const noexcept
    {
        if (m_moreHolders) {
            if (const auto found = std::find(m_moreHolders->begin(), m_moreHolders->end(), &holder);
                found != m_moreHolders->end()) {
                m_moreHolders->erase(found);
                return;
            }
        }
        if (m_holder == &holder)
            m_holder = nullptr;
    }

protected:
    explicit RuleHandle(Value value)
        : m_value(std::move(value))
    {
    }
    ~RuleHandle() = default;

    template <class Property> Property get(Property Fields::*property) const
    {
        const std::lock_guard lock(lockOf(this));
        return (*m_value).*property;
    }

    template <class Property> void set(Property Fields::*property, std::type_identity_t<Property> value)
    {
        auto changed = std::make_shared<Fields>(*m_value);
        (*changed).*property = std::move(value);
        setValue(std::move(changed));
    }

private:
    // A lock per record would cost too much memory: all records share a few, selected by address.
    static std::mutex& lockOf(const void* record)
    {
        static std::array<std::mutex, 16> locks;
        return locks[(std::hash<const void*>{}(record) >> 6U) % locks.size()];
    }

    using Holders = std::vector<RuleHolder<Fields>*>;

    Value m_value;
    mutable RuleHolder<Fields>* m_holder = nullptr;
    mutable std::unique_ptr<Holders> m_moreHolders; // mostly none: a rule is usually in one list
};

} // namespace quorvane::rules
