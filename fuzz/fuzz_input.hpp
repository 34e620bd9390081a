// Decoding fuzz input bytes into typed values, shared by the fuzz targets.
#ifndef KORVELBASE_FUZZ_FUZZ_INPUT_HPP
#define KORVELBASE_FUZZ_FUZZ_INPUT_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace kbfuzz {

// Reads values off the front of the input; once it runs out every read gives zero bytes.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    bool empty() const { return size_ == 0; }

    template <typename T>
    T take() {
        T value{};
        const std::size_t n = size_ < sizeof(T) ? size_ : sizeof(T);
        if (n > 0) std::memcpy(&value, data_, n);
        data_ += n;
        size_ -= n;
        return value;
    }

    // A double that is often one of the values that break formatting and rounding code.
    double takeDouble() {
        static const double kSpecial[] = {
            0.0, -0.0, 1.0, -1.0, 0.5, -0.5, 59.99999999, 1e-300, -1e-300, 1e300, -1e300,
            std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(),
            std::numeric_limits<double>::min(), std::numeric_limits<double>::denorm_min(),
            std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
            std::numeric_limits<double>::quiet_NaN(), 2147483647.0, -2147483648.0, 4294967296.0};
        const auto selector = take<std::uint8_t>();
        constexpr std::size_t kCount = sizeof(kSpecial) / sizeof(kSpecial[0]);
        if (selector < kCount) return kSpecial[selector];
        return take<double>();
    }

    // An int in [lo, hi].
    int takeInt(int lo, int hi) {
        const auto raw = take<std::uint32_t>();
        const auto span = static_cast<std::uint64_t>(static_cast<std::int64_t>(hi) - lo) + 1;
        return static_cast<int>(lo + static_cast<std::int64_t>(raw % span));
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};

}  // namespace kbfuzz

#endif  // KORVELBASE_FUZZ_FUZZ_INPUT_HPP
