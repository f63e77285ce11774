// Makes pixels fewer by a whole number in each direction.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "PictureModule/PictureModule.h"

/// Takes rows and gives averages of boxes. They are rounded down each column and then across, as libvips' own
/// shrink does, which takes several times as long over a small picture.
class BoxFilter {
  public:
    /// A row has `channels` bytes a pixel, 1, 3 or 4, and begins with `boxes` boxes. The sides of a box are 1
    /// to 2895.
    BoxFilter(int boxes, int channels, BoxSize box);

    /// True with each row that completes a row of boxes.
    bool Add(const std::uint8_t* row);
    /// The averages of the row of boxes that was completed, to be asked for once; there until the next ones.
    std::uint8_t* TakeAverages();

  private:
    /// Division of a sum of so many bytes, with rounding: by a factor, of which the compiler makes several at
    /// once.
    class Divisor {
      public:
        explicit Divisor(std::size_t count)
            : m_half(static_cast<std::uint32_t>(count / 2)),
              m_factor(static_cast<std::uint32_t>((std::uint64_t{1} << kShift) / count + 1)) {}
        /// Exact as long as 256 * count * count is below 2 to the power of kShift.
        std::uint32_t operator()(std::uint32_t sum) const {
            return static_cast<std::uint32_t>((std::uint64_t{sum + m_half} * m_factor) >> kShift);
        }

      private:
        static constexpr int kShift = 31;
        std::uint32_t m_half;
        std::uint32_t m_factor;
    };

    template <std::size_t kChannels>
    void AverageAcross();

    std::size_t m_channels;
    std::size_t m_across;
    std::size_t m_down;
    Divisor m_byAcross;
    Divisor m_byDown;
    std::size_t m_rows = 0;             ///< in the sums
    std::vector<std::uint32_t> m_sums;  ///< down the columns, of each channel
    std::vector<std::uint8_t> m_averages;
};
