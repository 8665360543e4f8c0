#pragma once
// A key-value store whose copies share one container until one of them writes.
#include <memory>
#include <unordered_map>

template <class Key, class Value>
class KeyValueInterface {
public:
    virtual ~KeyValueInterface() {}
    virtual void setValue(const Key& key, const Value& value) = 0;
    virtual Value value(const Key& key, const Value& defaultValue) const = 0;
};

template <class Key, class Value, class Container = std::unordered_map<Key, Value>>
class KeyValue : public KeyValueInterface<Key, Value> {
public:
    KeyValue() = default;

    void setValue(const Key& key, const Value& value) override
    {
        if (!d || d.use_count() != 1)
            detach();
        d->container[key] = value;
    }

    Value value(const Key& key, const Value& defaultValue) const override
    {
        if (d) {
            auto it = d->container.find(key);
            if (it != d->container.end())
                return it->second;
        }
        return defaultValue;
    }

    // For tests: whether two copies still share their container.
    bool sharesWith(const KeyValue& other) const { return d && d == other.d; }

private:
    struct KeyValuePrivate {
        KeyValuePrivate() : container(10) {}
        Container container;
    };

    void detach()
    {
        auto fresh = std::make_shared<KeyValuePrivate>();
        if (d)
            for (const auto& entry : d->container)
                fresh->container.insert(entry);
        d = std::move(fresh);
    }

    std::shared_ptr<KeyValuePrivate> d = std::make_shared<KeyValuePrivate>();
};
