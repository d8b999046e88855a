#pragma once

#include <memory>
#include <utility>

namespace Kalvio::Math::SpatialIndexes::detail {

/// What an index owns: made when it is first changed, and read as empty until then and after it was moved away.
template <class Data>
class OwnData {
public:
    OwnData() noexcept = default;
    OwnData& operator=(std::unique_ptr<Data> made) noexcept {
        data = std::move(made);
        return *this;
    }

    const Data& operator*() const { return data == nullptr ? Empty() : *data; }
    Data& operator*() {
        if (data == nullptr) data = std::make_unique<Data>();
        return *data;
    }
    const Data* operator->() const { return &**this; }
    Data* operator->() { return &**this; }

private:
    static const Data& Empty() {
        static const Data empty;
        return empty;
    }

    std::unique_ptr<Data> data;
};

}  // namespace Kalvio::Math::SpatialIndexes::detail
