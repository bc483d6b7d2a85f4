// AK_List and AK_Dict: the program's growing array and its hash map. Part of AK_Basic.h, which is what to include.
//
// Both own their elements. Sizes are int. Any operation that can grow a list or a dictionary invalidates pointers and
// references into it. Reading one from several threads is safe, everything else belongs to one thread.

#pragma once

#include "AK_Basic_Message.h"

#include <algorithm>
#include <climits>
#include <new>
#include <type_traits>
#include <utility>

/// Array that grows by doubling and never shrinks by itself. The elements up to the capacity exist as objects: spare
/// ones are as `new T[]` makes them, so numbers among them have no value yet.
template <class T>
class AK_List {
public:
    /// An empty list with room for `capacity` elements (at least 1).
    explicit AK_List(int capacity = 1) : _dim(std::max(capacity, 1)), _data(NewArray(_dim)) {}

    AK_List(const AK_List& other) : AK_List(other._size)
    {
        std::copy(other.begin(), other.end(), _data);
        _size = other._size;
    }

    AK_List(AK_List&& other) noexcept : AK_List() { Swap(other); }

    AK_List& operator=(const AK_List& other)
    {
        if (this == &other) return *this;
        if (_dim < other._size) {
            _size = 0;   // nothing to carry over
            Redimension(other._size);
        }
        std::copy(other.begin(), other.end(), _data);
        _size = other._size;
        return *this;
    }

    AK_List& operator=(AK_List&& other) noexcept
    {
        Swap(other);
        return *this;
    }

    ~AK_List() { delete[] _data; }

    int Size() const { return _size; }
    int Capacity() const { return _dim; }
    bool IsEmpty() const { return _size == 0; }

    /// Elements by index from 0 to Size() - 1; not checked.
    T& operator[](int index) { return _data[index]; }
    const T& operator[](int index) const { return _data[index]; }

    T* Data() { return _data; }
    const T* Data() const { return _data; }
    T* begin() { return _data; }
    T* end() { return _data + _size; }
    const T* begin() const { return _data; }
    const T* end() const { return _data + _size; }

    /// Appends an element, which may be one of this list's own, and returns its index.
    int Append(T element)
    {
        if (_size == _dim) {
            AK_ASSERT(_dim <= INT_MAX / 2);
            Redimension(2 * _dim);
        }
        _data[_size] = std::move(element);
        return _size++;
    }

    /// Sets the capacity to exactly n (at least 1) and returns it; elements that have no room are dropped.
    int Redimension(int n)
    {
        n = std::max(n, 1);
        if (n == _dim) return _dim;
        T* data = NewArray(n);
        _size = std::min(_size, n);
        std::copy(_data, _data + _size, data);
        delete[] _data;
        _data = data;
        _dim = n;
        return _dim;
    }

    /// Makes the list n elements long, with the capacity of exactly n if it has to grow. New elements are the spare
    /// ones as they stand: give them a value.
    void SetSize(int n)
    {
        AK_ASSERT(n >= 0);
        if (n > _dim) Redimension(n);
        _size = n;
    }

    /// Makes the list n elements that all equal `value`.
    void Fill(int n, const T& value)
    {
        const T copy = value;   // it may be an element of this list
        if (n > _dim) _size = 0;
        SetSize(n);
        std::fill(begin(), end(), copy);
    }

    /// Takes out one element by moving those behind it one place down. The spare element left behind keeps what it was
    /// given last.
    void Remove(int index)
    {
        AK_ASSERT(index >= 0 && index < _size);
        std::move(_data + index + 1, _data + _size, _data + index);
        --_size;
    }

    /// Takes out one element by moving the last one into its place: quick, but the order is lost.
    void RemoveUnordered(int index)
    {
        AK_ASSERT(index >= 0 && index < _size);
        if (index != _size - 1) _data[index] = _data[_size - 1];
        --_size;
    }

    /// Makes the list empty; the capacity stays.
    void Clear() { _size = 0; }

    /// Index of the first element equal to `value`, or -1.
    int IndexOf(const T& value) const
    {
        const T* found = std::find(begin(), end(), value);
        return found == end() ? -1 : int(found - begin());
    }

    void Swap(AK_List& other) noexcept
    {
        std::swap(_dim, other._dim);
        std::swap(_size, other._size);
        std::swap(_data, other._data);
    }

private:
    static T* NewArray(int n)
    {
        T* data = new (std::nothrow) T[n];
        AK_ASSERT(data);
        return data;
    }

    int _dim;        // capacity, at least 1
    int _size = 0;   // elements in use
    T* _data;        // _dim elements
};

/// The hash of a number or a pointer: its bytes from the last to the first. The result is not negative.
template <class K>
int HashIndex(const K& key)
{
    static_assert(std::is_pointer_v<K> || std::is_integral_v<K> || std::is_enum_v<K>,
                  "give a hash function for keys of this type");
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(&key);
    int h = 0;
    for (int i = int(sizeof key) - 1; i >= 0; --i) h = ((h & 0x3FFFFF) << 8) + bytes[i];
    return h;
}

/// Hash map from K to V: buckets of keys and values side by side. Entries are never removed.
template <class K, class V>
class AK_Dict {
public:
    using Hash = int (*)(const K&);
    using Equal = int (*)(const K&, const K&);

    /// buckets: how many to begin with (at least 1); they multiply when there are more than 10 entries a bucket.
    /// defaultValue: what a new entry holds. equal: null compares with ==.
    explicit AK_Dict(int buckets = 11, const V& defaultValue = V(), Hash hash = HashIndex<K>, Equal equal = nullptr)
        : _buckets(std::max(buckets, 1)),
          _keys(new AK_List<K>[_buckets]),
          _values(new AK_List<V>[_buckets]),
          _default(defaultValue),
          _hash(hash),
          _equal(equal)
    {
    }

    ~AK_Dict()
    {
        delete[] _keys;
        delete[] _values;
    }

    AK_Dict(const AK_Dict&) = delete;
    AK_Dict& operator=(const AK_Dict&) = delete;

    int Count() const { return _count; }
    int Buckets() const { return _buckets; }

    /// The value of a key, made with the default value if there is none. Valid until the next new entry.
    V& operator[](const K& key)
    {
        if (V* value = Find(key)) return *value;
        AppendTo(BucketOf(key), key, _default);
        if (++_count > 10LL * _buckets) Rehash();
        return *Find(key);
    }

    /// The value of a key, or null when there is none. Valid until the next new entry.
    V* Find(const K& key) { return const_cast<V*>(std::as_const(*this).Find(key)); }
    const V* Find(const K& key) const
    {
        const int bucket = BucketOf(key);
        const AK_List<K>& keys = _keys[bucket];
        for (int i = 0; i < keys.Size(); ++i) {
            if (_equal ? _equal(keys[i], key) != 0 : keys[i] == key) return &_values[bucket][i];
        }
        return nullptr;
    }

private:
    // INT_MIN has no positive counterpart, hence unsigned.
    int BucketOf(const K& key) const
    {
        const int h = _hash(key);
        return int((h < 0 ? 0u - unsigned(h) : unsigned(h)) % unsigned(_buckets));
    }

    void AppendTo(int bucket, const K& key, const V& value)
    {
        _keys[bucket].Append(key);
        _values[bucket].Append(value);
    }

    static int PrimeFrom(int n)
    {
        if (n <= 2) return 2;
        for (n |= 1;; n += 2) {
            int divisor = 3;
            while (divisor <= n / divisor && n % divisor != 0) divisor += 2;
            if (divisor > n / divisor) return n;
        }
    }

    void Rehash()
    {
        AK_ASSERT(_buckets <= INT_MAX / 2);
        AK_Dict larger(PrimeFrom(2 * _buckets), _default, _hash, _equal);
        for (int b = 0; b < _buckets; ++b) {
            for (int i = 0; i < _keys[b].Size(); ++i)
                larger.AppendTo(larger.BucketOf(_keys[b][i]), _keys[b][i], _values[b][i]);
        }
        std::swap(_buckets, larger._buckets);
        std::swap(_keys, larger._keys);
        std::swap(_values, larger._values);
    }

    int _count = 0;
    int _buckets;
    AK_List<K>* _keys;     // one list a bucket
    AK_List<V>* _values;   // beside them, the values in the same order
    V _default;
    Hash _hash;
    Equal _equal;
};
