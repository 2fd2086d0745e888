#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <vector>

namespace kvr {

/// A list that its copies share until one of them is changed: a copy costs a pointer, `own` gives the list of
/// this copy alone.
template <class T>
struct SharedList {
    std::shared_ptr<std::vector<T>> held = std::make_shared<std::vector<T>>();

    [[nodiscard]] const std::vector<T>& view() const { return *held; }
    std::vector<T>& own() {
        if (held.use_count() > 1) held = std::make_shared<std::vector<T>>(*held);
        return *held;
    }

    [[nodiscard]] std::size_t size() const { return held->size(); }
    [[nodiscard]] bool empty() const { return held->empty(); }
    [[nodiscard]] const T& operator[](std::size_t n) const { return (*held)[n]; }
    [[nodiscard]] const T& front() const { return held->front(); }
    [[nodiscard]] const T& back() const { return held->back(); }
    [[nodiscard]] auto begin() const { return held->cbegin(); }
    [[nodiscard]] auto end() const { return held->cend(); }
};

/// A list whose copies share its elements, each until it is changed: a copy costs a pointer an element, `own`
/// gives an element of this copy alone.
template <class T>
struct SharedElements {
    std::vector<std::shared_ptr<T>> held;

    /// Walks the elements as they are read.
    struct Iterator {
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        typename std::vector<std::shared_ptr<T>>::const_iterator at;

        reference operator*() const { return **at; }
        pointer operator->() const { return at->get(); }
        Iterator& operator++() {
            ++at;
            return *this;
        }
        Iterator operator++(int) {
            Iterator before = *this;
            ++at;
            return before;
        }
        bool operator==(const Iterator& other) const = default;
    };

    T& own(std::size_t n) {
        if (held[n].use_count() > 1) held[n] = std::make_shared<T>(*held[n]);
        return *held[n];
    }
    void push_back(T element) { held.push_back(std::make_shared<T>(std::move(element))); }

    [[nodiscard]] std::size_t size() const { return held.size(); }
    [[nodiscard]] bool empty() const { return held.empty(); }
    [[nodiscard]] const T& operator[](std::size_t n) const { return *held[n]; }
    [[nodiscard]] const T& front() const { return *held.front(); }
    [[nodiscard]] const T& back() const { return *held.back(); }
    [[nodiscard]] Iterator begin() const { return {held.begin()}; }
    [[nodiscard]] Iterator end() const { return {held.end()}; }
};

}  // namespace kvr
