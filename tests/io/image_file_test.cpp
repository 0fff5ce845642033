// Image files with every codec: round trips of every format and pixel type
// from ROIs in padded images, files made by libpng and libtiff themselves,
// and refusals with their codes and an untouched destination. Built when
// Mirel::IO has PNG, JPEG and TIFF.
#include <png.h>
#include <tiffio.h>

#include <cstdio>
#include <functional>
#include <string>

#include "image_file_fixture.h"

namespace {

using namespace iotest;

TEST_F(ImageFile, LosslessFormatsGiveBackEveryByteOfTheRoi) {
  Rng rng(11);
  RoundTrip<EBW8>("grey.png", rng);
  RoundTrip<EBW16>("deep.PNG", rng);
  RoundTrip<EC24>("colour.png", rng);
  RoundTrip<EBW8>("grey.tif", rng);
  RoundTrip<EBW16>("deep.tiff", rng);
  RoundTrip<EC24>("colour.TIF", rng);
}

TEST_F(ImageFile, JpegStaysCloseAndHonoursQuality) {
  Rng rng(5);
  RoundTrip<EBW8>("grey.jpg", rng, true);
  RoundTrip<EC24>("colour.jpeg", rng, true);
  RoundTrip<EC24>("colour.JPE", rng, true);
  // Noise costs far more bytes at quality 100 than at quality 10.
  EImage<EBW8> noise(64, 64);
  testsupport::FillRandom(noise, rng);
  ImgSave(&noise, Path("q10.jpg").c_str(), E_IMAGE_FILE_AUTO, 10);
  ImgSave(&noise, Path("q100.jpg").c_str(), E_IMAGE_FILE_AUTO, 100);
  EXPECT_LT(2 * fs::file_size(Path("q10.jpg")), fs::file_size(Path("q100.jpg")));
}

TEST_F(ImageFile, LoadFillsABorrowedBufferOfTheFileSize) {
  Rng rng(8);
  EImage<EC24> image(5, 3);
  testsupport::FillRandom(image, rng);
  ImgSave(&image, Path("c.tif").c_str());
  std::vector<EC24> buffer(7 * 3);
  EImage<EC24> view(buffer.data(), 5, 3, 7 * 3);
  ImgLoad(Path("c.tif").c_str(), &view);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_TRUE(view.IsBorrowed());
  EXPECT_EQ(view.GetImagePtr(0, 1), &buffer[7]);
  EXPECT_EQ(testsupport::Bytes(view), testsupport::Bytes(image));
}

TEST_F(ImageFile, ExplicitFormatOverridesTheExtension) {
  Rng rng(2);
  EImage<EBW16> image(7, 5);
  testsupport::FillRandom(image, rng);
  const std::string path = Path("frame.dat");
  ImgSave(&image, path.c_str(), E_IMAGE_FILE_PNG);
  ASSERT_EQ(EGetError(), E_OK);
  EImage<EBW16> loaded;
  ImgLoad(path.c_str(), &loaded, E_IMAGE_FILE_PNG);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(testsupport::Bytes(loaded), testsupport::Bytes(image));
  ExpectRefused<EBW16>(path, E_ERROR_BAD_ARGUMENT, "ImgLoad (BW16)");
  EXPECT_EQ(ImgImageFileFormat("a/b.Jpeg"), E_IMAGE_FILE_JPEG);
  EXPECT_EQ(ImgImageFileFormat("a.b/c"), E_IMAGE_FILE_AUTO);
  EXPECT_EQ(ImgImageFileFormat("c.tiff"), E_IMAGE_FILE_TIFF);
}

// Files hold red, green, blue; EC24 holds component 0 blue, 2 red.
TEST_F(ImageFile, ColourFilesMapRedToComponentTwo) {
  const Data rgb = {255, 0, 0, 10, 20, 30};
  WriteAll(Path("rgb.ppm"), "P6\n2 1\n255\n", rgb);
  EImage<EC24> image;
  ImgLoad(Path("rgb.ppm").c_str(), &image);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(testsupport::Bytes(image), (Data{0, 0, 255, 30, 20, 10}));
  ImgSave(&image, Path("back.ppm").c_str());
  EXPECT_EQ(ReadAll(Path("back.ppm")), ReadAll(Path("rgb.ppm")));

  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = 2;
  png.height = 1;
  png.format = PNG_FORMAT_RGB;
  ASSERT_NE(png_image_write_to_file(&png, Path("rgb.png").c_str(), 0, rgb.data(), 0, nullptr), 0);
  EImage<EC24> fromPng;
  ImgLoad(Path("rgb.png").c_str(), &fromPng);
  EXPECT_EQ(testsupport::Bytes(fromPng), testsupport::Bytes(image));

  ImgSave(&image, Path("rgb.tif").c_str());
  TIFF* tif = TIFFOpen(Path("rgb.tif").c_str(), "r");
  ASSERT_NE(tif, nullptr);
  std::uint32_t raster[2] = {0, 0};
  ASSERT_EQ(TIFFReadRGBAImageOriented(tif, 2, 1, raster, ORIENTATION_TOPLEFT, 0), 1);
  TIFFClose(tif);
  EXPECT_EQ(TIFFGetR(raster[0]), 255u);
  EXPECT_EQ(TIFFGetB(raster[0]), 0u);
  EXPECT_EQ(TIFFGetR(raster[1]), 10u);
  EXPECT_EQ(TIFFGetB(raster[1]), 30u);
}

TEST_F(ImageFile, GreySamplesLoadAsStored) {
  EImage<EBW16> deep;
  WriteAll(Path("raw.pgm"), "P5\n2 1\n4095\n", {0x0F, 0xFF, 0x01, 0x23});
  ImgLoad(Path("raw.pgm").c_str(), &deep);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(deep.GetImagePtr(0, 0)->value, 4095);
  EXPECT_EQ(deep.GetImagePtr(1, 0)->value, 0x0123);
  WriteAll(Path("plain.pgm"), "P2\n# made by hand\n3 1 # three wide\n1000\n0 999\n1000\n");
  ImgLoad(Path("plain.pgm").c_str(), &deep);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(testsupport::Bytes(deep), (Data{0, 0, 0xE7, 0x03, 0xE8, 0x03}));

  const std::uint16_t linear[2] = {0x1234, 0xFEDC};
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = 2;
  png.height = 1;
  png.format = PNG_FORMAT_LINEAR_Y;
  ASSERT_NE(png_image_write_to_file(&png, Path("deep.png").c_str(), 0, linear, 0, nullptr), 0);
  ImgLoad(Path("deep.png").c_str(), &deep);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(deep.GetImagePtr(0, 0)->value, 0x1234);
  EXPECT_EQ(deep.GetImagePtr(1, 0)->value, 0xFEDC);

  // White-is-zero TIFF turns into black-is-zero.
  TIFF* tif = TIFFOpen(Path("white.tif").c_str(), "w");
  ASSERT_NE(tif, nullptr);
  TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, 2);
  TIFFSetField(tif, TIFFTAG_IMAGELENGTH, 1);
  TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
  TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  unsigned char row[2] = {0, 200};
  ASSERT_EQ(TIFFWriteScanline(tif, row, 0, 0), 1);
  TIFFClose(tif);
  EImage<EBW8> grey;
  ImgLoad(Path("white.tif").c_str(), &grey);
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(testsupport::Bytes(grey), (Data{255, 55}));
}

TEST_F(ImageFile, TruncatedFilesAreRefused) {
  Rng rng(9);
  EImage<EBW8> grey(40, 30);
  EImage<EC24> colour(40, 30);
  testsupport::FillRandom(grey, rng);
  FillSmooth(colour, rng);
  for (const char* name : {"t.pgm", "t.png", "t.jpg", "t.tif", "t.ppm"}) {
    const std::string path = Path(name);
    const bool isColour = std::string(name) == "t.ppm";
    if (isColour) ImgSave(&colour, path.c_str());
    else ImgSave(&grey, path.c_str());
    ASSERT_EQ(EGetError(), E_OK) << name;
    const Data whole = ReadAll(path);
    // libtiff takes a TIFF that lacks only its last byte, the end of the
    // directory chain, with every pixel there; deeper cuts are refused.
    const bool tiff = std::string(name) == "t.tif";
    for (const size_t keep : {whole.size() - (tiff ? 40 : 1), whole.size() / 2, size_t{12}, size_t{2}}) {
      WriteAll(path, "", Data(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(keep)));
      if (isColour) ExpectRefused<EC24>(path, E_ERROR_FILE_READ, "ImgLoad (C24)");
      else ExpectRefused<EBW8>(path, E_ERROR_FILE_READ, "ImgLoad (BW8)");
    }
  }
}

TEST_F(ImageFile, FilesOfAnotherTypeOrKindAreRefused) {
  Rng rng(4);
  EImage<EBW8> grey(9, 7);
  testsupport::FillRandom(grey, rng);
  const E_IMAGE_FILE_FORMAT formats[] = {E_IMAGE_FILE_PGM, E_IMAGE_FILE_PPM, E_IMAGE_FILE_PNG, E_IMAGE_FILE_JPEG,
                                         E_IMAGE_FILE_TIFF};
  const char* names[] = {"f.pgm", "f.ppm", "f.png", "f.jpg", "f.tif"};
  // Every grey file asked for as each other format.
  for (int i : {0, 2, 3, 4}) {
    ImgSave(&grey, Path(names[i]).c_str());
    ASSERT_EQ(EGetError(), E_OK);
    for (int j = 0; j < 5; ++j)
      if (j != i) ExpectRefused<EBW8>(Path(names[i]), E_ERROR_IMAGE_FILE_HEADER, "ImgLoad (BW8)", formats[j]);
  }
  fs::copy_file(Path("f.png"), Path("png.jpg"));
  ExpectRefused<EBW8>(Path("png.jpg"), E_ERROR_IMAGE_FILE_HEADER, "ImgLoad (BW8)");
  WriteAll(Path("zero.pgm"), "P5\n0 3\n255\n");
  ExpectRefused<EBW8>(Path("zero.pgm"), E_ERROR_IMAGE_FILE_HEADER, "ImgLoad (BW8)");
  WriteAll(Path("junk.pgm"), "P5\nwide high\n");
  ExpectRefused<EBW8>(Path("junk.pgm"), E_ERROR_IMAGE_FILE_HEADER, "ImgLoad (BW8)");
  // A sample above maxval is corrupt data.
  WriteAll(Path("over.pgm"), "P2 2 1 100 50 101");
  ExpectRefused<EBW8>(Path("over.pgm"), E_ERROR_FILE_READ, "ImgLoad (BW8)");

  // Pixels of another kind than the image type, or of no kind taken here.
  EImage<EC24> colour(4, 4);
  testsupport::FillRandom(colour, rng);
  ImgSave(&colour, Path("rgb.png").c_str());
  ExpectRefused<EBW8>(Path("rgb.png"), E_ERROR_BAD_PIXEL_TYPE, "ImgLoad (BW8)");
  ExpectRefused<EC24>(Path("f.png"), E_ERROR_BAD_PIXEL_TYPE, "ImgLoad (C24)");
  ExpectRefused<EBW16>(Path("f.tif"), E_ERROR_BAD_PIXEL_TYPE, "ImgLoad (BW16)");
  WriteAll(Path("deep.ppm"), "P6\n1 1\n65535\n", {1, 2, 3, 4, 5, 6});
  ExpectRefused<EC24>(Path("deep.ppm"), E_ERROR_BAD_PIXEL_TYPE, "ImgLoad (C24)");
  const unsigned char rgba[4] = {1, 2, 3, 4};
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  png.width = png.height = 1;
  png.format = PNG_FORMAT_RGBA;
  ASSERT_NE(png_image_write_to_file(&png, Path("rgba.png").c_str(), 0, rgba, 0, nullptr), 0);
  ExpectRefused<EC24>(Path("rgba.png"), E_ERROR_BAD_PIXEL_TYPE, "ImgLoad (C24)");
}

TEST_F(ImageFile, BadArgumentsAndMissingFilesLoadNothing) {
  ExpectRefused<EBW8>(Path("absent.png"), E_ERROR_FILE_OPEN, "ImgLoad (BW8)");
  ExpectRefused<EC24>(Path("absent.tif"), E_ERROR_FILE_OPEN, "ImgLoad (C24)");
  ExpectRefused<EBW8>(Path("picture.bmp"), E_ERROR_BAD_ARGUMENT, "ImgLoad (BW8)");
  ExpectRefused<EBW8>(Path("noextension"), E_ERROR_BAD_ARGUMENT, "ImgLoad (BW8)");
  ExpectRefused<EBW8>(Path("a.png"), E_ERROR_BAD_ARGUMENT, "ImgLoad (BW8)", static_cast<E_IMAGE_FILE_FORMAT>(9));
  ExpectRefused<EBW8>("", E_ERROR_BAD_ARGUMENT, "ImgLoad (BW8)");
  ImgLoad(Path("a.png").c_str(), static_cast<EImage<EBW8>*>(nullptr));
  EXPECT_EQ(EGetError(), E_ERROR_VOID_IMAGE);

  int width = -1;
  E_IMAGE_TYPES type = E_IMAGE_TYPE_BW32;
  ImgImageFileInfo(Path("absent.pgm").c_str(), &width, nullptr, &type);
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  EXPECT_STREQ(EGetErrorTrace(), "ImgImageFileInfo");
  EXPECT_EQ(width, -1);
  EXPECT_EQ(type, E_IMAGE_TYPE_BW32);
}

TEST_F(ImageFile, RefusedSavesLeaveNoFile) {
  EImage<EBW8> none;
  EImage<EBW16> deep(3, 3);
  EImage<EC24> colour(3, 3);
  EImage<EBW8> grey(3, 3);
  Rng rng(6);
  testsupport::FillRandom(grey, rng);
  struct Case {
    std::function<void(const char*)> save;
    const char* name;
    E_ERRORS code;
    const char* label;
  };
  const Case cases[] = {
      {[&](const char* p) { ImgSave(&none, p); }, "void.png", E_ERROR_VOID_IMAGE, "ImgSave (BW8)"},
      {[&](const char* p) { ImgSave(static_cast<const EROI<EC24>*>(nullptr), p); }, "null.png", E_ERROR_VOID_IMAGE,
       "ImgSave (C24)"},
      {[&](const char* p) { ImgSave(&grey, p); }, "grey.gif", E_ERROR_BAD_ARGUMENT, "ImgSave (BW8)"},
      {[&](const char* p) { ImgSave(&grey, p, E_IMAGE_FILE_AUTO, 0); }, "q0.jpg", E_ERROR_BAD_ARGUMENT, "ImgSave (BW8)"},
      {[&](const char* p) { ImgSave(&grey, p, E_IMAGE_FILE_AUTO, 101); }, "q101.jpg", E_ERROR_BAD_ARGUMENT,
       "ImgSave (BW8)"},
      {[&](const char* p) { ImgSave(&deep, p); }, "deep.jpg", E_ERROR_BAD_PIXEL_TYPE, "ImgSave (BW16)"},
      {[&](const char* p) { ImgSave(&deep, p); }, "deep.ppm", E_ERROR_BAD_PIXEL_TYPE, "ImgSave (BW16)"},
      {[&](const char* p) { ImgSave(&grey, p); }, "grey.ppm", E_ERROR_BAD_PIXEL_TYPE, "ImgSave (BW8)"},
      {[&](const char* p) { ImgSave(&colour, p); }, "colour.pgm", E_ERROR_BAD_PIXEL_TYPE, "ImgSave (C24)"},
      {[&](const char* p) { ImgSave(&colour, p); }, "no/such/folder.png", E_ERROR_FILE_OPEN, "ImgSave (C24)"},
  };
  for (const Case& c : cases) {
    c.save(Path(c.name).c_str());
    EXPECT_EQ(EGetError(), c.code) << c.name;
    EXPECT_STREQ(EGetErrorTrace(), c.label) << c.name;
    EXPECT_FALSE(fs::exists(Path(c.name))) << c.name;
  }
  // A device that refuses every byte: the write fails and the device stays.
  if (fs::exists("/dev/full")) {
    for (E_IMAGE_FILE_FORMAT f : {E_IMAGE_FILE_PGM, E_IMAGE_FILE_PNG, E_IMAGE_FILE_JPEG, E_IMAGE_FILE_TIFF}) {
      EImage<EBW8> big(300, 300);
      testsupport::FillRandom(big, rng);
      ImgSave(&big, "/dev/full", f);
      EXPECT_EQ(EGetError(), E_ERROR_FILE_WRITE) << f;
      EXPECT_STREQ(EGetErrorTrace(), "ImgSave (BW8)");
      EXPECT_TRUE(fs::exists("/dev/full"));
    }
  }
}

}  // namespace
