#include "PictureModule/BoxFilter.h"

#include <algorithm>

BoxFilter::BoxFilter(int boxes, int channels, BoxSize box)
    : m_channels(static_cast<std::size_t>(channels)),
      m_across(static_cast<std::size_t>(box.across)),
      m_down(static_cast<std::size_t>(box.down)),
      m_byAcross(m_across),
      m_byDown(m_down),
      m_sums(static_cast<std::size_t>(boxes) * m_across * m_channels),
      m_averages(static_cast<std::size_t>(boxes) * m_channels) {}

bool BoxFilter::Add(const std::uint8_t* row) {
    std::uint32_t* const sums = m_sums.data();
    const std::size_t count = m_sums.size();
    if (m_rows == 0) {
        std::copy_n(row, count, sums);
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            sums[i] += row[i];
        }
    }
    m_rows = (m_rows + 1) % m_down;
    return m_rows == 0;
}

std::uint8_t* BoxFilter::TakeAverages() {
    for (std::uint32_t& sum : m_sums) {
        sum = m_byDown(sum);
    }
    switch (m_channels) {
        case 1:
            AverageAcross<1>();
            break;
        case 3:
            AverageAcross<3>();
            break;
        default:
            AverageAcross<4>();
    }
    return m_averages.data();
}

template <std::size_t kChannels>
void BoxFilter::AverageAcross() {
    const std::uint32_t* pixel = m_sums.data();
    std::uint8_t* const end = m_averages.data() + m_averages.size();
    for (std::uint8_t* average = m_averages.data(); average < end; average += kChannels) {
        std::uint32_t sums[kChannels] = {};
        for (std::size_t i = 0; i < m_across; ++i, pixel += kChannels) {
            for (std::size_t channel = 0; channel < kChannels; ++channel) {
                sums[channel] += pixel[channel];
            }
        }
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            average[channel] = static_cast<std::uint8_t>(m_byAcross(sums[channel]));
        }
    }
}
