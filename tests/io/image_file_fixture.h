// The image-file tests' shared fixture: a folder of its own per test,
// round trips from random ROIs of padded images, and refused loads checked
// for code, label and an untouched destination.
#ifndef MIREL_TESTS_IO_IMAGE_FILE_FIXTURE_H_
#define MIREL_TESTS_IO_IMAGE_FILE_FIXTURE_H_

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "mirel/io/image_file.h"
#include "test_support.h"

namespace iotest {

namespace fs = std::filesystem;
using testsupport::Rng;
using Data = std::vector<unsigned char>;

inline Data ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Data(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
inline void WriteAll(const std::string& path, const std::string& text, const Data& data = {}) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  out.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
}

template <class T>
E_IMAGE_TYPES TypeOf() {
  return std::is_same<T, EBW8>::value ? E_IMAGE_TYPE_BW8 : std::is_same<T, EBW16>::value ? E_IMAGE_TYPE_BW16
                                                                                          : E_IMAGE_TYPE_C24;
}

// JPEG keeps smooth content: a random plane per byte of the pixel, which
// stays below 256 on ROIs up to 64 by 64.
template <class T>
void FillSmooth(EROI<T>& roi, Rng& rng) {
  for (unsigned k = 0; k < sizeof(T); ++k) {
    const int base = static_cast<int>(rng() % 64), dx = static_cast<int>(rng() % 3), dy = static_cast<int>(rng() % 3);
    for (int y = 0; y < roi.GetHeight(); ++y)
      for (int x = 0; x < roi.GetWidth(); ++x)
        reinterpret_cast<unsigned char*>(roi.GetImagePtr(x, y))[k] = static_cast<unsigned char>(base + dx * x + dy * y);
  }
}

class ImageFile : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() / ("mirel_io_" + std::to_string(std::random_device()()) + "_" + info->name());
    fs::create_directories(dir_);
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
    EOk();
  }
  std::string Path(const std::string& name) const { return (dir_ / name).string(); }

  // Saves random ROIs of random placement and size and loads them back into
  // an image that held another size. Lossy files are compared by mean and
  // largest difference.
  template <class T>
  void RoundTrip(const std::string& name, Rng& rng, bool lossy = false) {
    const std::string path = Path(name);
    for (int trial = 0; trial < 3; ++trial) {
      const int w = lossy ? 16 + static_cast<int>(rng() % 40) : 1 + static_cast<int>(rng() % 37);
      const int h = lossy ? 16 + static_cast<int>(rng() % 20) : 1 + static_cast<int>(rng() % 9);
      EImage<T> image;
      EROI<T> roi;
      testsupport::PlaceRandom(image, roi, w, h, rng);
      testsupport::FillRandom(image, rng);
      if (lossy) FillSmooth(roi, rng);
      ImgSave(&roi, path.c_str());
      ASSERT_EQ(EGetError(), E_OK) << name << ": " << EGetErrorTrace();
      int fw = 0, fh = 0;
      E_IMAGE_TYPES type = E_IMAGE_TYPE_BW32;
      ImgImageFileInfo(path.c_str(), &fw, &fh, &type);
      EXPECT_EQ(EGetError(), E_OK) << name;
      EXPECT_EQ(fw, w);
      EXPECT_EQ(fh, h);
      EXPECT_EQ(type, TypeOf<T>());
      EImage<T> loaded(3, 50);
      ImgLoad(path.c_str(), &loaded);
      ASSERT_EQ(EGetError(), E_OK) << name << ": " << EGetErrorTrace();
      ASSERT_EQ(loaded.GetWidth(), w);
      ASSERT_EQ(loaded.GetHeight(), h);
      const Data want = testsupport::Bytes(roi), got = testsupport::Bytes(loaded);
      if (!lossy) {
        EXPECT_EQ(got, want) << name << " " << w << "x" << h;
        continue;
      }
      long sum = 0;
      int worst = 0;
      for (size_t i = 0; i < want.size(); ++i) {
        const int d = std::abs(static_cast<int>(got[i]) - static_cast<int>(want[i]));
        sum += d;
        worst = std::max(worst, d);
      }
      EXPECT_LE(static_cast<double>(sum) / want.size(), 2.0) << name;
      EXPECT_LE(worst, 16) << name;
    }
  }

  // Loads into a destination that holds pixels already, and checks the code,
  // the label and that the destination kept its size and every byte.
  template <class T>
  void ExpectRefused(const std::string& path, E_ERRORS code, const char* label,
                     E_IMAGE_FILE_FORMAT format = E_IMAGE_FILE_AUTO) {
    Rng rng(3);
    EImage<T> dst(6, 4);
    testsupport::FillRandom(dst, rng);
    const Data before = testsupport::Snapshot(dst);
    ImgLoad(path.c_str(), &dst, format);
    EXPECT_EQ(EGetError(), code) << path << " as format " << format;
    EXPECT_STREQ(EGetErrorTrace(), label) << path;
    EXPECT_EQ(dst.GetWidth(), 6);
    EXPECT_EQ(dst.GetHeight(), 4);
    EXPECT_EQ(testsupport::Snapshot(dst), before) << path;
  }

  fs::path dir_;
};

}  // namespace iotest

#endif  // MIREL_TESTS_IO_IMAGE_FILE_FIXTURE_H_
