#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// The ordered, owned elements of a polyline in plan or space. Copies are deep: every element is cloned.
template <class Element>
class ElementChain {
public:
    ElementChain() = default;
    ElementChain(const ElementChain& other) { CopyElements(other); }
    ElementChain(ElementChain&&) noexcept = default;
    ElementChain& operator=(const ElementChain& other) {
        if (this != &other) *this = ElementChain(other);
        return *this;
    }
    ElementChain& operator=(ElementChain&&) noexcept = default;
    ~ElementChain() = default;

    std::size_t Size() const { return elements.size(); }
    bool IsEmpty() const { return elements.empty(); }
    Element& operator[](std::size_t index) { return *elements[index]; }
    const Element& operator[](std::size_t index) const { return *elements[index]; }
    Element& Front() { return *elements.front(); }
    const Element& Front() const { return *elements.front(); }
    Element& Back() { return *elements.back(); }
    const Element& Back() const { return *elements.back(); }
    void Clear() { elements.clear(); }

    void Append(std::unique_ptr<Element> element) { elements.push_back(std::move(element)); }
    void AppendClone(const Element& element) { Append(CloneOf(element)); }

    /// Takes the elements over before position `index`. @return false, nothing taken, for a null pointer, a pointer
    /// given twice or an index beyond the size
    bool Insert(std::size_t index, const std::vector<Element*>& added) {
        if (index > elements.size()) return false;
        std::vector<const Element*> sorted(added.begin(), added.end());
        std::sort(sorted.begin(), sorted.end(), std::less<>());
        if (!sorted.empty() && sorted.front() == nullptr) return false;
        if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) return false;
        elements.reserve(elements.size() + added.size());
        auto position = elements.begin() + static_cast<std::ptrdiff_t>(index);
        for (Element* const element : added)
            position = elements.insert(position, std::unique_ptr<Element>(element)) + 1;
        return true;
    }

    /// The indexes that there are, ascending and each once.
    std::vector<std::uint64_t> KnownIndexes(std::vector<std::uint64_t> indexes) const {
        std::sort(indexes.begin(), indexes.end());
        indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
        indexes.erase(std::lower_bound(indexes.begin(), indexes.end(), elements.size()), indexes.end());
        return indexes;
    }

    /// Removes [first, last); with `release` the elements live on, owned by whoever holds their pointers.
    void Remove(std::size_t first, std::size_t last, bool release) {
        const auto from = elements.begin() + static_cast<std::ptrdiff_t>(first);
        const auto to = elements.begin() + static_cast<std::ptrdiff_t>(last);
        if (release) std::for_each(from, to, [](std::unique_ptr<Element>& element) { (void)element.release(); });
        elements.erase(from, to);
    }

    /// Reversed clones in the opposite order replace the elements.
    void Reverse() {
        std::vector<std::unique_ptr<Element>> reversed;
        reversed.reserve(elements.size());
        for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
            reversed.push_back(CloneOf(**element));
            reversed.back()->Reverse();
        }
        elements = std::move(reversed);
    }

    /// True when every element starts where the one before it ends, by strict comparison of points.
    bool IsContinuous(double tolerance) const {
        for (std::size_t i = 1; i < elements.size(); ++i) {
            if (!elements[i - 1]->GetEnd().IsEqualTo(elements[i]->GetStart(), tolerance)) return false;
        }
        return true;
    }

    bool IsEqualTo(const ElementChain& other, double tolerance) const {
        return std::equal(elements.begin(), elements.end(), other.elements.begin(), other.elements.end(),
                          [tolerance](const auto& a, const auto& b) { return a->IsEqualTo(*b, tolerance); });
    }

    /// Sum of the lengths of the elements [first, last).
    double LengthOf(std::size_t first, std::size_t last) const {
        double length = 0.0;
        for (std::size_t i = first; i < last; ++i) length += elements[i]->GetLength();
        return length;
    }

    /// Appends the indexes of the elements shorter than `minLength`; true when there are any, or, with no index, when
    /// the chain as a whole is shorter or empty.
    bool FindShort(std::vector<std::uint64_t>& indexes, double minLength) const {
        if (elements.empty() || LengthOf(0, elements.size()) < minLength) return true;
        const std::size_t known = indexes.size();
        for (std::size_t i = 0; i < elements.size(); ++i) {
            if (elements[i]->GetLength() < minLength) indexes.push_back(i);
        }
        return indexes.size() > known;
    }

    static std::unique_ptr<Element> CloneOf(const Element& element) {
        return std::unique_ptr<Element>(static_cast<Element*>(element.Clone()));
    }

private:
    void CopyElements(const ElementChain& other) {
        elements.reserve(other.elements.size());
        for (const auto& element : other.elements) AppendClone(*element);
    }

    std::vector<std::unique_ptr<Element>> elements;
};

}  // namespace Kalvio::Math::detail
