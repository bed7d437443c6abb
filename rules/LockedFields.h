#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <type_traits>
#include <utility>

namespace quorvane {

// The properties of a record, a plain struct `Fields`. They may be read from any thread, and are set by one.
//
// A record carries no lock of its own: all records share a few, chosen by address.
template <class Fields> class LockedFields {
public:
    // Every property at once, without lock or copy. Only for the thread that also sets them.
    const Fields& fields() const { return m_fields; }

    // The same to be changed, before anybody else knows the record: no change is counted.
    Fields& fieldsBeforeSharing() { return m_fields; }

    // A list keeps the record from now on: its changes count.
    void noteKept() const { m_isKept.store(true, std::memory_order_relaxed); }

    // How often any property was set, on any kept record of this kind, and how often one that takes part in
    // rule equality or redundancy. Who keeps something made from properties compares the count to learn that
    // it may be out of date.
    static std::uint64_t changes() { return s_changes.load(std::memory_order_relaxed); }
    static std::uint64_t keyChanges() { return s_keyChanges.load(std::memory_order_relaxed); }

protected:
    explicit LockedFields(Fields fields)
        : m_fields(std::move(fields))
    {
    }

    template <class Value> Value get(Value Fields::*property) const
    {
        const std::lock_guard lock(lockOf(this));
        return m_fields.*property;
    }

    template <class Value> void set(Value Fields::*property, std::type_identity_t<Value> value)
    {
        if (m_isKept.load(std::memory_order_relaxed))
            s_changes.fetch_add(1, std::memory_order_relaxed);
        const std::lock_guard lock(lockOf(this));
        std::swap(m_fields.*property, value); // the old value ends after the lock
    }

    template <class Value> void setKey(Value Fields::*property, std::type_identity_t<Value> value)
    {
        set(property, std::move(value));
        if (m_isKept.load(std::memory_order_relaxed))
            s_keyChanges.fetch_add(1, std::memory_order_relaxed);
    }

private:
    static std::mutex& lockOf(const void* record)
    {
        static std::array<std::mutex, 16> locks;
        return locks[(std::hash<const void*>{}(record) >> 6U) % locks.size()];
    }

    static inline std::atomic<std::uint64_t> s_changes{0};
    static inline std::atomic<std::uint64_t> s_keyChanges{0};
    Fields m_fields;
    mutable std::atomic<bool> m_isKept{false};
};

} // namespace quorvane
