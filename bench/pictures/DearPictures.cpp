// The dearest pictures that are decoded, and some that are refused: processor time, and growth of the process
// at its peak. It knows no floor and has no row: docs/performance.md tells what it found.

#include <cstdio>
// libjpeg's header needs <cstdio> before it.
#include <jpeglib.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <vector>

#include "IpodService/AlbumArt.h"
#include "ServiceUtil/Logger.h"
#include "bench/Memory.h"

namespace {

using Bytes = std::vector<u8>;
using Script = std::vector<jpeg_scan_info>;

constexpr std::size_t kBlockBytes = 2 << 20;  ///< of shared memory: the most that a picture can have
constexpr u8 kFlat = 90;

struct Drawing {
    u32 width;
    u32 height;
    int components = 3;
    int lumaSampling = 1;  ///< 2: halved colours
    Script scans{};        ///< empty: one of all components
    u32 noisyRows = 0;     ///< at the top; the others have one colour
};

J_COLOR_SPACE ColoursOf(int components) {
    if (components == 1) {
        return JCS_GRAYSCALE;
    }
    return components == 3 ? JCS_YCbCr : JCS_CMYK;
}

class Encoder {
  public:
    explicit Encoder(const Drawing& drawing) : m_drawing(drawing) {
        m_codec.err = jpeg_std_error(&m_errors);
        jpeg_create_compress(&m_codec);
        jpeg_mem_dest(&m_codec, &m_memory, &m_size);
        m_codec.image_width = drawing.width;
        m_codec.image_height = drawing.height;
        m_codec.input_components = drawing.components;
        m_codec.in_color_space = ColoursOf(drawing.components);
        jpeg_set_defaults(&m_codec);
        m_codec.comp_info[0].h_samp_factor = m_codec.comp_info[0].v_samp_factor = drawing.lumaSampling;
        m_codec.optimize_coding = TRUE;
        m_codec.scan_info = m_drawing.scans.empty() ? nullptr : m_drawing.scans.data();
        m_codec.num_scans = static_cast<int>(m_drawing.scans.size());
    }
    ~Encoder() {
        jpeg_destroy_compress(&m_codec);
        std::free(m_memory);
    }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    Bytes Encode() {
        jpeg_start_compress(&m_codec, TRUE);
        Bytes row(std::size_t{m_drawing.width} * static_cast<unsigned>(m_drawing.components));
        while (m_codec.next_scanline < m_codec.image_height) {
            Draw(row, m_codec.next_scanline < m_drawing.noisyRows);
            JSAMPROW rows = row.data();
            jpeg_write_scanlines(&m_codec, &rows, 1);
        }
        jpeg_finish_compress(&m_codec);
        return {m_memory, m_memory + m_size};
    }

  private:
    void Draw(Bytes& row, bool noisy) {
        if (noisy) {
            std::generate(row.begin(), row.end(), [&] { return static_cast<u8>(m_random() >> 8); });
        } else {
            std::fill(row.begin(), row.end(), kFlat);
        }
    }

    Drawing m_drawing;
    std::minstd_rand m_random{1};
    jpeg_compress_struct m_codec{};
    jpeg_error_mgr m_errors{};
    unsigned char* m_memory = nullptr;
    unsigned long m_size = 0;
};

/// With as many noisy rows as a block has room for: both pixels and bits cost.
Bytes FillBlock(Drawing drawing) {
    constexpr u32 kTried = 64;
    const std::size_t flat = Encoder(drawing).Encode().size();
    drawing.noisyRows = kTried;
    const std::size_t perRow = (Encoder(drawing).Encode().size() - flat) / kTried + 1;
    drawing.noisyRows = static_cast<u32>((kBlockBytes - std::min(flat, kBlockBytes)) / perRow);
    Bytes bytes = Encoder(drawing).Encode();
    bytes.resize(std::min(bytes.size(), kBlockBytes));
    return bytes;
}

/// The most work that valid scans can ask for: each refines every coefficient of the first component by a
/// bit.
Script Refining(int components, int scans) {
    Script script{{components, {0, 1, 2}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, scans - 2}};
    for (int bit = scans - 2; bit > 0; --bit) {
        script.push_back({1, {0}, 1, 63, bit, bit - 1});
    }
    return script;
}

Script Apart() {
    return {{1, {0}, 0, 63, 0, 0}, {1, {1}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
}

/// Every coefficient by itself, bit by bit: 2,080 scans of a few bytes each.
Script OneByOne() {
    constexpr int kTopBit = 10;
    Script script{{3, {0, 1, 2}, 0, 0, 0, 0}};
    for (int component = 0; component < 3; ++component) {
        for (int coefficient = 1; coefficient < 64; ++coefficient) {
            script.push_back({1, {component}, coefficient, coefficient, 0, kTopBit});
            for (int bit = kTopBit; bit > 0; --bit) {
                script.push_back({1, {component}, coefficient, coefficient, bit, bit - 1});
            }
        }
    }
    return script;
}

bool Convert(const Bytes& jpeg) {
    try {
        static PictureLoader pictures(PICTURE_MODULE);
        ConvertAlbumArt({400, 400, static_cast<u32>(jpeg.size()), jpeg}, pictures);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// In a process of its own, so that one picture's memory is not another's.
void Measure(const char* name, const Bytes& jpeg) {
    std::fflush(stdout);
    if (fork() != 0) {
        wait(nullptr);
        return;
    }
    Convert(Encoder({400, 400}).Encode());  // starts the image library
    const double memory = PeakMegabytes();
    const std::clock_t begin = std::clock();
    const bool decoded = Convert(jpeg);
    const double milliseconds = 1e3 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    std::printf("%-56s %7zu bytes: %s %7.2f ms, %6.1f MB\n", name, jpeg.size(),
                decoded ? "decoded in" : "refused in", milliseconds, PeakMegabytes() - memory);
    std::fflush(stdout);
    _exit(0);
}

}  // namespace

int main() {
    CLogger::Instance().SetLevel(LogLevel::kOff);
    // Of sides that the decoder cannot halve as it goes.
    Measure("plain, 4200 x 4200", FillBlock({4200, 4200}));
    Measure("plain, 8191 x 8191", FillBlock({8191, 8191}));
    Measure("plain, 8191 x 8191, for print", FillBlock({8191, 8191, 4}));
    Measure("plain, 1024 x 65500", FillBlock({1024, 65500}));
    Measure("plain, 16384 x 4096", FillBlock({16384, 4096}));
    Measure("components apart, 2890 x 2890", FillBlock({2890, 2890, 3, 1, Apart()}));
    Measure("progressive, 10 scans, 2890 x 2890", FillBlock({2890, 2890, 3, 1, Refining(3, 10)}));
    Measure("progressive, 10 scans, 4090 x 4090, halved colours",
            FillBlock({4090, 4090, 3, 2, Refining(3, 10)}));
    Measure("progressive, 10 scans, 5000 x 5000, grey", FillBlock({5000, 5000, 1, 1, Refining(1, 10)}));
    Measure("progressive, 12 scans, 500 x 40000, grey", FillBlock({500, 40000, 1, 1, Refining(1, 12)}));
    Measure("progressive, 10 scans, 16384 x 1530, grey", FillBlock({16384, 1530, 1, 1, Refining(1, 10)}));
    Measure("progressive, 2080 scans, 110 x 330", Encoder({110, 330, 3, 1, OneByOne()}).Encode());
    Measure("plain, 8193 x 8193", FillBlock({8193, 8193}));
    Measure("plain, 16400 x 400", FillBlock({16400, 400}));
    Measure("progressive, 10 scans, 2900 x 2900", FillBlock({2900, 2900, 3, 1, Refining(3, 10)}));
    Measure("progressive, 11 scans, 5000 x 5000, grey", FillBlock({5000, 5000, 1, 1, Refining(1, 11)}));
    Measure("progressive, 2080 scans, 1000 x 1000", Encoder({1000, 1000, 3, 1, OneByOne()}).Encode());
}
