// Image files in every build: PGM and PPM, which need no codec library,
// and the formats that a build was made without, which are refused before
// any file is touched.
#include <filesystem>
#include <string>

#include "image_file_fixture.h"

namespace {

using namespace iotest;

TEST_F(ImageFile, PortableFormatsGiveBackEveryByteOfTheRoi) {
  Rng rng(11);
  RoundTrip<EBW8>("grey.pgm", rng);
  RoundTrip<EBW16>("deep.PGM", rng);
  RoundTrip<EC24>("colour.ppm", rng);
}

TEST_F(ImageFile, AvailabilityFollowsTheCodecsOfTheBuild) {
  EXPECT_TRUE(ImgImageFileFormatAvailable(E_IMAGE_FILE_PGM));
  EXPECT_TRUE(ImgImageFileFormatAvailable(E_IMAGE_FILE_PPM));
  EXPECT_FALSE(ImgImageFileFormatAvailable(E_IMAGE_FILE_AUTO));
  EXPECT_FALSE(ImgImageFileFormatAvailable(static_cast<E_IMAGE_FILE_FORMAT>(9)));
  EXPECT_EQ(ImgImageFileFormatAvailable(E_IMAGE_FILE_PNG), MIREL_TEST_IO_PNG != 0);
  EXPECT_EQ(ImgImageFileFormatAvailable(E_IMAGE_FILE_JPEG), MIREL_TEST_IO_JPEG != 0);
  EXPECT_EQ(ImgImageFileFormatAvailable(E_IMAGE_FILE_TIFF), MIREL_TEST_IO_TIFF != 0);
}

// A format without its codec: saving writes no file and loading leaves the
// destination as it was, both with 1007 before the file is opened, by
// extension or named outright; the extension still names the format.
TEST_F(ImageFile, FormatsWithoutTheirCodecAreRefused) {
  struct Format {
    E_IMAGE_FILE_FORMAT format;
    const char* name;
  };
  const Format formats[] = {{E_IMAGE_FILE_PNG, "a.png"}, {E_IMAGE_FILE_JPEG, "a.jpg"}, {E_IMAGE_FILE_TIFF, "a.tif"}};
  Rng rng(7);
  EImage<EBW8> grey(5, 4);
  testsupport::FillRandom(grey, rng);
  ImgSave(&grey, Path("grey.pgm").c_str());
  ASSERT_EQ(EGetError(), E_OK);
  int refused = 0;
  for (const Format& f : formats) {
    if (ImgImageFileFormatAvailable(f.format)) continue;
    ++refused;
    EXPECT_EQ(ImgImageFileFormat(f.name), f.format);
    ImgSave(&grey, Path(f.name).c_str());
    EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT) << f.name;
    EXPECT_STREQ(EGetErrorTrace(), "ImgSave (BW8)");
    EXPECT_FALSE(std::filesystem::exists(Path(f.name))) << f.name;
    ImgSave(&grey, Path("other.pgm").c_str(), f.format);
    EXPECT_EQ(EGetError(), E_ERROR_BAD_ARGUMENT) << f.name;
    EXPECT_FALSE(std::filesystem::exists(Path("other.pgm"))) << f.name;
    ExpectRefused<EBW8>(Path("grey.pgm"), E_ERROR_BAD_ARGUMENT, "ImgLoad (BW8)", f.format);
    ExpectRefused<EBW8>(Path(f.name), E_ERROR_BAD_ARGUMENT, "ImgLoad (BW8)");
  }
  if (refused == 0) GTEST_SKIP() << "this build reads and writes every format";
}

}  // namespace
