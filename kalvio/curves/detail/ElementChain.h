#pragma once

#include "kalvio/core/detail/Lazy.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Kalvio::Math::detail {

/// The ordered, owned elements of a polyline in plan or space. Copies are deep: every element is cloned. Stations are
/// kept once asked for; a change made through the chain drops those from the place of the change on.
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
    const Element& operator[](std::size_t index) const { return *elements[index]; }
    const Element& Front() const { return *elements.front(); }
    const Element& Back() const { return *elements.back(); }
    /// The element, to be changed.
    Element& Change(std::size_t index) {
        KeepStations(index);
        return *elements[index];
    }
    void Clear() {
        KeepStations(0);
        elements.clear();
    }

    void Append(std::unique_ptr<Element> element) {
        KeepStations(elements.size());
        elements.push_back(std::move(element));
    }
    void AppendClone(const Element& element) { Append(CloneOf(element)); }

    /// Takes the elements over before position `index`. @return false, nothing taken, for a null pointer, a pointer
    /// given twice or an index beyond the size
    bool Insert(std::size_t index, const std::vector<Element*>& added) {
        if (index > elements.size()) return false;
        std::vector<const Element*> sorted(added.begin(), added.end());
        std::sort(sorted.begin(), sorted.end(), std::less<>());
        if (!sorted.empty() && sorted.front() == nullptr) return false;
        if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end()) return false;
        KeepStations(index);
        std::vector<std::unique_ptr<Element>> taken(added.size());
        if (elements.capacity() - elements.size() < added.size()) {
            elements.reserve((std::max)(elements.size() + added.size(), 2 * elements.size()));
        }
        for (std::size_t i = 0; i < added.size(); ++i) taken[i].reset(added[i]);  // from here on nothing can fail
        elements.insert(elements.begin() + static_cast<std::ptrdiff_t>(index), std::make_move_iterator(taken.begin()),
                        std::make_move_iterator(taken.end()));
        return true;
    }

    /// The indexes that there are, ascending and each once.
    std::vector<std::uint64_t> KnownIndexes(std::vector<std::uint64_t> indexes) const {
        std::sort(indexes.begin(), indexes.end());
        indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
        indexes.erase(std::lower_bound(indexes.begin(), indexes.end(), elements.size()), indexes.end());
        return indexes;
    }

    /// Removes the elements of ascending indexes, which there are; with `release` they live on, owned by whoever holds
    /// their pointers.
    void Remove(const std::vector<std::uint64_t>& indexes, bool release) {
        if (indexes.empty()) return;
        KeepStations(indexes.front());
        std::size_t kept = indexes.front();
        auto next = indexes.begin();
        for (std::size_t i = kept; i < elements.size(); ++i) {
            if (next == indexes.end() || *next != i) {
                elements[kept++] = std::move(elements[i]);
                continue;
            }
            ++next;
            if (release) (void)elements[i].release();
        }
        elements.resize(kept);
    }

    /// Reversed clones in the opposite order replace the elements.
    void Reverse() {
        std::vector<std::unique_ptr<Element>> reversed;
        reversed.reserve(elements.size());
        for (auto element = elements.rbegin(); element != elements.rend(); ++element) {
            reversed.push_back(CloneOf(**element));
            reversed.back()->Reverse();
        }
        KeepStations(0);
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

    struct Stations {
        std::vector<double> start;   // of each element along the chain; one more for the end of the chain
        std::vector<double> length;  // of each element
    };

    const Stations& GetStations() const {
        areMeasured.Get([this] {
            if (stations.start.empty()) stations.start.push_back(0.0);
            for (std::size_t i = stations.length.size(); i < elements.size(); ++i) {
                stations.length.push_back(elements[i]->GetLength());
                stations.start.push_back(stations.start.back() + stations.length.back());
            }
            return true;
        });
        return stations;
    }

    /// The element that a station falls on, at a joint the one that starts there; the chain must not be empty.
    std::size_t ElementAt(double station) const {
        const std::vector<double>& starts = GetStations().start;
        const auto next = std::upper_bound(starts.begin(), starts.end() - 1, station);
        std::size_t i = next == starts.begin() ? 0 : static_cast<std::size_t>(next - starts.begin()) - 1;
        while (i > 0 && !(starts[i + 1] > starts[i])) --i;  // the end is not left to elements of no length
        return i;
    }

    static std::unique_ptr<Element> CloneOf(const Element& element) {
        return std::unique_ptr<Element>(static_cast<Element*>(element.Clone()));
    }

private:
    void CopyElements(const ElementChain& other) {
        elements.reserve(other.elements.size());
        for (const auto& element : other.elements) AppendClone(*element);
    }

    // The stations of the first `count` elements hold after a change.
    void KeepStations(std::size_t count) {
        areMeasured.Invalidate();
        if (stations.length.size() <= count) return;
        stations.length.resize(count);
        stations.start.resize(count + 1);
    }

    std::vector<std::unique_ptr<Element>> elements;
    Lazy<bool> areMeasured;     // the stations are those of all elements
    mutable Stations stations;  // of the first elements at least; written under the lock of `areMeasured`
};

/// A polyline of clones of two geometries, the elements of a polyline taken one by one.
/// @param asElement  the geometry as an element; null when it is none
/// @return a new object owned by the caller; null when one of the two is no element
template <class Polyline, class Geometry, class AsElement>
Polyline* JoinElements(const Geometry& first, const Geometry& second, AsElement&& asElement) {
    auto joined = std::make_unique<Polyline>();
    for (const Geometry* const part : {&first, &second}) {
        const auto* const element = asElement(*part);
        if (element == nullptr) return nullptr;
        using Chain = ElementChain<std::remove_const_t<std::remove_pointer_t<decltype(asElement(*part))>>>;
        if (element->GetType() != joined->GetType()) {
            joined->AppendElement(Chain::CloneOf(*element).release());
            continue;
        }
        const auto& polyline = static_cast<const Polyline&>(*element);
        for (unsigned int i = 0; i < polyline.GetNrOfElements(); ++i) {
            joined->AppendElement(Chain::CloneOf(polyline.GetElementAtIndex(i)).release());
        }
    }
    return joined.release();
}

}  // namespace Kalvio::Math::detail
