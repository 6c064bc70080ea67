// src/support/array1.h - arrays indexed from 1, bounds-checked, contiguous.
#pragma once
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace invsetup {

/// A vector indexed 1..size(). An index outside that range throws std::out_of_range, which the
/// operation's top-level trap turns into its message.
template <class T>
class Array1 {
public:
    Array1() = default;
    explicit Array1(int count, T fill = T{}) : values_(checked_count(count), fill) {}

    int size() const { return static_cast<int>(values_.size()); }
    bool empty() const { return values_.empty(); }

    T& operator[](int i) { return values_[offset(i)]; }
    const T& operator[](int i) const { return values_[offset(i)]; }

    void assign(int count, T fill = T{}) { values_.assign(checked_count(count), fill); }
    void resize(int count, T fill = T{}) { values_.resize(checked_count(count), fill); }
    void clear() { values_.clear(); }

    /// Contiguous storage: data()[0] is element 1.
    T* data() { return values_.data(); }
    const T* data() const { return values_.data(); }
    auto begin() { return values_.begin(); }
    auto end() { return values_.end(); }
    auto begin() const { return values_.begin(); }
    auto end() const { return values_.end(); }
    std::vector<T>& vector() { return values_; }
    const std::vector<T>& vector() const { return values_; }

    bool operator==(const Array1&) const = default;

private:
    static std::size_t checked_count(int count) {
        if (count < 0) throw std::out_of_range("negative array size " + std::to_string(count));
        return static_cast<std::size_t>(count);
    }
    std::size_t offset(int i) const {
        if (i < 1 || i > size())
            throw std::out_of_range("index " + std::to_string(i) + " outside 1.." + std::to_string(size()));
        return static_cast<std::size_t>(i - 1);
    }
    std::vector<T> values_;
};

/// A table indexed (i, k), i in 1..rows(), k in 1..columns(); stored row by row (k fastest).
template <class T>
class Array2 {
public:
    Array2() = default;
    Array2(int rows, int columns, T fill = T{}) { assign(rows, columns, fill); }

    int rows() const { return rows_; }
    int columns() const { return columns_; }

    T& operator()(int i, int k) { return values_[offset(i, k)]; }
    const T& operator()(int i, int k) const { return values_[offset(i, k)]; }

    void assign(int rows, int columns, T fill = T{}) {
        if (rows < 0 || columns < 0)
            throw std::out_of_range("negative table size " + std::to_string(rows) + " x " + std::to_string(columns));
        rows_ = rows;
        columns_ = columns;
        values_.assign(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns), fill);
    }
    T* data() { return values_.data(); }
    const T* data() const { return values_.data(); }

    bool operator==(const Array2&) const = default;

private:
    std::size_t offset(int i, int k) const {
        if (i < 1 || i > rows_ || k < 1 || k > columns_)
            throw std::out_of_range("index (" + std::to_string(i) + ", " + std::to_string(k) + ") outside (1.." +
                                    std::to_string(rows_) + ", 1.." + std::to_string(columns_) + ")");
        return static_cast<std::size_t>(i - 1) * static_cast<std::size_t>(columns_) + static_cast<std::size_t>(k - 1);
    }
    int rows_ = 0;
    int columns_ = 0;
    std::vector<T> values_;
};

}  // namespace invsetup
