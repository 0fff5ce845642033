// A program that saves and loads image files through the installed Mirel::IO.
//   consumer_io FOLDER
#include <mirel/io/image_file.h>
#include <mirel/mirel.h>

#include <cstdio>
#include <cstring>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string png = std::string(argv[1]) + "/window.png";

  // A colour image with a ROI that does not start on a row boundary.
  EImage<EC24> image(31, 17);
  for (int y = 0; y < image.GetHeight(); ++y)
    for (int x = 0; x < image.GetWidth(); ++x)
      image.SetPixel(EC24(static_cast<unsigned char>(x * 8), static_cast<unsigned char>(y * 15), 77), x, y);
  EROI<EC24> window(&image, 3, 2, 20, 11);
  ImgSave(&window, png.c_str());
  if (EGetError() != E_OK) {
    std::printf("save failed: %d [%s]\n", EGetError(), EGetErrorTrace());
    return 1;
  }
  EImage<EC24> loaded;
  ImgLoad(png.c_str(), &loaded);
  if (EGetError() != E_OK || loaded.GetWidth() != 20 || loaded.GetHeight() != 11) return 1;
  for (int y = 0; y < 11; ++y)
    if (std::memcmp(loaded.GetImagePtr(0, y), window.GetImagePtr(0, y), 20 * sizeof(EC24)) != 0) return 1;
  std::printf("round trip of %s: ok\n", png.c_str());

  // A missing file is reported through the error state.
  EImage<EBW8> grey;
  ImgLoad((std::string(argv[1]) + "/absent.pgm").c_str(), &grey);
  std::printf("%d: %s [%s]\n", EGetError(), EGetErrorText(EGetError()), EGetErrorTrace());
  return EGetError() == E_ERROR_FILE_OPEN ? 0 : 1;
}
