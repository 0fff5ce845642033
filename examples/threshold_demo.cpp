// threshold_demo: picks a binarization threshold for a grey image with every
// selection mode of MirelImage, binarizes it with the minimum-residue
// threshold and writes the source, a plot of its histogram with the
// thresholds marked, and the binary result.
//
//   threshold_demo [image] [--out DIR]
//
// With no image it makes a camera-like frame of its own: a shaded
// background, a few parts and noise. It reads PGM and PPM images (8 or 16
// bits), and PNG and JPEG when it was built with libpng and libjpeg; colour
// images are turned to grey. It writes PNG when built with libpng, PGM/PPM
// otherwise, into DIR (default "out").
#include <mirel/mirel.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#if defined(MIREL_DEMO_PNG)
#include <png.h>
#endif
#if defined(MIREL_DEMO_JPEG)
#include <csetjmp>
// jpeglib.h needs FILE and size_t declared first.
#include <jpeglib.h>
#endif

namespace {

// A plain picture in memory: 1 (grey) or 3 (colour) bytes a pixel.
struct Picture {
  int width = 0;
  int height = 0;
  int channels = 1;
  std::vector<unsigned char> pixels;
};

// ---------------------------------------------------------------- files

bool ReadFile(const std::string& path, std::vector<unsigned char>& bytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

// PGM (P2, P5) and PPM (P3, P6), maxval up to 65535 (scaled to 8 bits).
bool ReadPnm(const std::vector<unsigned char>& b, Picture& pic, std::string& error) {
  size_t at = 2;
  auto number = [&](long& v) {
    for (;;) {
      while (at < b.size() && std::isspace(b[at])) ++at;
      if (at < b.size() && b[at] == '#') {
        while (at < b.size() && b[at] != '\n') ++at;
        continue;
      }
      break;
    }
    if (at >= b.size() || !std::isdigit(b[at])) return false;
    v = 0;
    while (at < b.size() && std::isdigit(b[at]) && v < 1000000) v = v * 10 + (b[at++] - '0');
    return true;
  };
  const char kind = static_cast<char>(b[1]);
  const bool ascii = kind == '2' || kind == '3';
  pic.channels = kind == '2' || kind == '5' ? 1 : 3;
  long w, h, maxval;
  if (!number(w) || !number(h) || !number(maxval) || w <= 0 || h <= 0 || w > 100000 || h > 100000 || maxval <= 0 ||
      maxval > 65535) {
    error = "bad PNM header";
    return false;
  }
  pic.width = static_cast<int>(w);
  pic.height = static_cast<int>(h);
  const size_t count = static_cast<size_t>(w) * h * pic.channels;
  pic.pixels.resize(count);
  const bool wide = maxval > 255;
  if (!ascii) ++at;  // the single white space after maxval
  for (size_t i = 0; i < count; ++i) {
    long v;
    if (ascii) {
      if (!number(v)) {
        error = "PNM data ends early";
        return false;
      }
    } else {
      const size_t need = wide ? 2 : 1;
      if (at + need > b.size()) {
        error = "PNM data ends early";
        return false;
      }
      v = wide ? (b[at] << 8) | b[at + 1] : b[at];
      at += need;
    }
    pic.pixels[i] = static_cast<unsigned char>(std::min(v, maxval) * 255 / maxval);
  }
  return true;
}

#if defined(MIREL_DEMO_PNG)
bool ReadPng(const std::vector<unsigned char>& b, Picture& pic, std::string& error) {
  png_image image;
  std::memset(&image, 0, sizeof(image));
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, b.data(), b.size())) {
    error = image.message;
    return false;
  }
  image.format = PNG_FORMAT_GRAY;
  pic.width = static_cast<int>(image.width);
  pic.height = static_cast<int>(image.height);
  pic.channels = 1;
  pic.pixels.resize(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, pic.pixels.data(), 0, nullptr)) {
    error = image.message;
    return false;
  }
  return true;
}

bool WritePng(const std::string& path, const Picture& pic) {
  png_image image;
  std::memset(&image, 0, sizeof(image));
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(pic.width);
  image.height = static_cast<png_uint_32>(pic.height);
  image.format = pic.channels == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB;
  return png_image_write_to_file(&image, path.c_str(), 0, pic.pixels.data(), 0, nullptr) != 0;
}
#endif

#if defined(MIREL_DEMO_JPEG)
struct JpegError {
  jpeg_error_mgr mgr;
  std::jmp_buf jump;
};

void JpegFail(j_common_ptr info) { std::longjmp(reinterpret_cast<JpegError*>(info->err)->jump, 1); }

bool ReadJpeg(const std::vector<unsigned char>& b, Picture& pic, std::string& error) {
  jpeg_decompress_struct info;
  JpegError err;
  info.err = jpeg_std_error(&err.mgr);
  err.mgr.error_exit = JpegFail;
  if (setjmp(err.jump)) {
    jpeg_destroy_decompress(&info);
    error = "bad JPEG data";
    return false;
  }
  jpeg_create_decompress(&info);
  jpeg_mem_src(&info, b.data(), static_cast<unsigned long>(b.size()));
  jpeg_read_header(&info, TRUE);
  info.out_color_space = JCS_GRAYSCALE;
  jpeg_start_decompress(&info);
  pic.width = static_cast<int>(info.output_width);
  pic.height = static_cast<int>(info.output_height);
  pic.channels = 1;
  pic.pixels.resize(static_cast<size_t>(pic.width) * pic.height);
  while (info.output_scanline < info.output_height) {
    JSAMPROW row = pic.pixels.data() + static_cast<size_t>(info.output_scanline) * pic.width;
    jpeg_read_scanlines(&info, &row, 1);
  }
  jpeg_finish_decompress(&info);
  jpeg_destroy_decompress(&info);
  return true;
}
#endif

bool ReadPicture(const std::string& path, Picture& pic, std::string& error) {
  std::vector<unsigned char> b;
  if (!ReadFile(path, b)) {
    error = "cannot open the file";
    return false;
  }
  if (b.size() >= 2 && b[0] == 'P' && b[1] >= '2' && b[1] <= '6' && b[1] != '4') return ReadPnm(b, pic, error);
  if (b.size() >= 8 && b[0] == 0x89 && b[1] == 'P' && b[2] == 'N' && b[3] == 'G') {
#if defined(MIREL_DEMO_PNG)
    return ReadPng(b, pic, error);
#else
    error = "this build reads no PNG (libpng was not found when it was configured)";
    return false;
#endif
  }
  if (b.size() >= 3 && b[0] == 0xFF && b[1] == 0xD8 && b[2] == 0xFF) {
#if defined(MIREL_DEMO_JPEG)
    return ReadJpeg(b, pic, error);
#else
    error = "this build reads no JPEG (libjpeg was not found when it was configured)";
    return false;
#endif
  }
  error = "unknown format (PGM, PPM, PNG or JPEG expected)";
  return false;
}

// Writes PNG when available, else PGM or PPM; `stem` has no extension.
// Returns the path written, empty on failure.
std::string WritePicture(const std::string& stem, const Picture& pic) {
#if defined(MIREL_DEMO_PNG)
  const std::string path = stem + ".png";
  return WritePng(path, pic) ? path : std::string();
#else
  const std::string path = stem + (pic.channels == 1 ? ".pgm" : ".ppm");
  std::ofstream out(path, std::ios::binary);
  out << (pic.channels == 1 ? "P5" : "P6") << "\n" << pic.width << " " << pic.height << "\n255\n";
  out.write(reinterpret_cast<const char*>(pic.pixels.data()), static_cast<std::streamsize>(pic.pixels.size()));
  return out ? path : std::string();
#endif
}

// ---------------------------------------------------------------- images

// Colour pictures become grey with the usual luma weights.
void ToImage(const Picture& pic, EImage<EBW8>& image) {
  image.SetSize(pic.width, pic.height);
  for (int y = 0; y < pic.height; ++y) {
    EBW8* row = image.GetImagePtr(0, y);
    const unsigned char* p = pic.pixels.data() + static_cast<size_t>(y) * pic.width * pic.channels;
    for (int x = 0; x < pic.width; ++x, p += pic.channels)
      row[x] = pic.channels == 1 ? p[0] : static_cast<unsigned char>((299 * p[0] + 587 * p[1] + 114 * p[2] + 500) / 1000);
  }
}

Picture FromImage(EImage<EBW8>& image) {
  Picture pic;
  pic.width = image.GetWidth();
  pic.height = image.GetHeight();
  pic.pixels.resize(static_cast<size_t>(pic.width) * pic.height);
  for (int y = 0; y < pic.height; ++y)
    std::memcpy(&pic.pixels[static_cast<size_t>(y) * pic.width], image.GetImagePtr(0, y), pic.width);
  return pic;
}

// A camera-like frame: light falling off towards the corners, a bright
// plate with holes, bright washers, dark screws and a shadowed slot, and
// sensor noise. Deterministic.
void MakeFrame(EImage<EBW8>& image) {
  const int w = 800, h = 600;
  image.SetSize(w, h);
  uint32_t state = 0x9E3779B9u;
  auto next = [&state]() {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
  };
  struct Disc {
    int x, y, r, v;
  };
  const Disc washers[] = {{150, 140, 70, 205}, {640, 150, 60, 215}, {660, 450, 80, 200}};
  const Disc screws[] = {{150, 140, 25, 40}, {640, 150, 20, 35}, {660, 450, 30, 45}, {130, 470, 35, 30}};
  // The scene, sharp.
  std::vector<double> scene(static_cast<size_t>(w) * h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const double dx = (x - w * 0.4) / w, dy = (y - h * 0.45) / h;
      double v = 95.0 - 90.0 * (dx * dx + dy * dy) + 0.02 * x;  // shading
      if (x > 280 && x < 520 && y > 200 && y < 420) {            // plate with two holes
        v = 185.0 + 0.03 * (x - 280);
        for (const int hx : {340, 460}) {
          const int ex = x - hx, ey = y - 310;
          if (ex * ex + ey * ey < 30 * 30) v = 70.0;
        }
      }
      for (const Disc& d : washers)
        if ((x - d.x) * (x - d.x) + (y - d.y) * (y - d.y) < d.r * d.r) v = d.v;
      for (const Disc& d : screws)
        if ((x - d.x) * (x - d.x) + (y - d.y) * (y - d.y) < d.r * d.r) v = d.v;
      if (x > 300 && x < 500 && y > 480 && y < 520) v = 20.0;  // slot
      scene[static_cast<size_t>(y) * w + x] = v;
    }
  }
  // The lens softens edges: a 5x5 binomial blur, rows then columns.
  const double tap[5] = {1 / 16.0, 4 / 16.0, 6 / 16.0, 4 / 16.0, 1 / 16.0};
  std::vector<double> pass(scene.size());
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      double sum = 0;
      for (int k = -2; k <= 2; ++k) sum += tap[k + 2] * scene[static_cast<size_t>(y) * w + std::clamp(x + k, 0, w - 1)];
      pass[static_cast<size_t>(y) * w + x] = sum;
    }
  for (int y = 0; y < h; ++y) {
    EBW8* row = image.GetImagePtr(0, y);
    for (int x = 0; x < w; ++x) {
      double v = 0;
      for (int k = -2; k <= 2; ++k) v += tap[k + 2] * pass[static_cast<size_t>(std::clamp(y + k, 0, h - 1)) * w + x];
      // Sensor noise: a sum of uniforms, roughly Gaussian with sigma 6.
      int n = 0;
      for (int k = 0; k < 4; ++k) n += static_cast<int>(next() % 21);
      v += (n - 40) * 0.6;
      row[x] = static_cast<unsigned char>(std::clamp(static_cast<int>(std::lround(v)), 0, 255));
    }
  }
}

// ---------------------------------------------------------------- plot

struct Rgb {
  unsigned char r, g, b;
};

struct Marker {
  const char* name;
  unsigned int threshold;
  Rgb colour;
  bool dashed;
};

// The histogram as bars (2 pixels a bin, square-root scale so that small
// classes show), a grey-level ramp beneath, and a vertical line at each
// threshold, drawn over the first column of bin t.
Picture Plot(const unsigned int* bins, const std::vector<Marker>& markers) {
  const int margin = 16, plotH = 300, rampH = 14, w = 512 + 2 * margin, h = plotH + rampH + 3 * margin;
  Picture pic;
  pic.width = w;
  pic.height = h;
  pic.channels = 3;
  pic.pixels.assign(static_cast<size_t>(w) * h * 3, 255);
  auto put = [&](int x, int y, Rgb c) {
    if (x < 0 || y < 0 || x >= w || y >= h) return;
    unsigned char* p = &pic.pixels[(static_cast<size_t>(y) * w + x) * 3];
    p[0] = c.r, p[1] = c.g, p[2] = c.b;
  };
  unsigned int top = 1;
  for (int i = 0; i < 256; ++i) top = std::max(top, bins[i]);
  const int base = margin + plotH;
  for (int i = 0; i < 256; ++i) {
    const int bar = static_cast<int>(std::lround(std::sqrt(static_cast<double>(bins[i]) / top) * plotH));
    for (int y = base - bar; y < base; ++y) {
      put(margin + 2 * i, y, Rgb{70, 70, 80});
      put(margin + 2 * i + 1, y, Rgb{70, 70, 80});
    }
    for (int y = base + margin / 2; y < base + margin / 2 + rampH; ++y) {
      const unsigned char g = static_cast<unsigned char>(i);
      put(margin + 2 * i, y, Rgb{g, g, g});
      put(margin + 2 * i + 1, y, Rgb{g, g, g});
    }
  }
  for (int x = margin - 1; x <= margin + 512; ++x) put(x, base, Rgb{0, 0, 0});
  // The first marker is drawn last and twice as wide, so that it stays in
  // sight where thresholds coincide.
  for (size_t k = markers.size(); k-- > 0;) {
    const Marker& m = markers[k];
    if (m.threshold > 256) continue;
    const int x = margin + 2 * static_cast<int>(m.threshold);
    for (int y = margin; y < base; ++y)
      if (!m.dashed || (y / 6) % 2 == 0) {
        put(x, y, m.colour);
        if (k == 0) put(x - 1, y, m.colour);
      }
  }
  return pic;
}

void Usage() {
  std::printf(
      "usage: threshold_demo [image] [--out DIR]\n"
      "  image   PGM or PPM%s%s; without it a frame is made up\n"
      "  --out   folder for the results (default: out)\n",
#if defined(MIREL_DEMO_PNG)
      ", PNG",
#else
      "",
#endif
#if defined(MIREL_DEMO_JPEG)
      ", JPEG"
#else
      ""
#endif
  );
}

}  // namespace

int main(int argc, char** argv) {
  std::string input, outDir = "out";
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--out" && i + 1 < argc) {
      outDir = argv[++i];
    } else if (arg == "-h" || arg == "--help") {
      Usage();
      return 0;
    } else if (!arg.empty() && arg[0] == '-') {
      Usage();
      return 2;
    } else {
      input = arg;
    }
  }

  EImage<EBW8> image;
  if (input.empty()) {
    MakeFrame(image);
    std::printf("Source: a made-up camera frame, %d x %d\n", image.GetWidth(), image.GetHeight());
  } else {
    Picture pic;
    std::string error;
    if (!ReadPicture(input, pic, error)) {
      std::fprintf(stderr, "threshold_demo: %s: %s\n", input.c_str(), error.c_str());
      return 1;
    }
    ToImage(pic, image);
    std::printf("Source: %s, %d x %d%s\n", input.c_str(), pic.width, pic.height,
                pic.channels == 3 ? " (colour, taken as grey)" : "");
  }

  EBWHistogramVector histogram;
  ImgHistogram(&image, &histogram);
  if (EGetError() != E_OK) {
    std::fprintf(stderr, "threshold_demo: %s (%s)\n", EGetErrorText(EGetError()), EGetErrorTrace());
    return 1;
  }

  struct Mode {
    const char* name;
    unsigned int value;
    Rgb colour;
    const char* colourName;
  };
  const Mode modes[] = {
      {"minimum residue", IMG_THRESHOLD_MIN_RESIDUE, Rgb{220, 30, 30}, "red, bold"},
      {"maximum entropy", IMG_THRESHOLD_MAX_ENTROPY, Rgb{30, 150, 40}, "green"},
      {"isodata (exhaustive)", IMG_THRESHOLD_ISODATA, Rgb{30, 80, 220}, "blue"},
      {"min distance", IMG_THRESHOLD_MIN_DISTANCE, Rgb{230, 140, 0}, "orange"},
      {"min squared distance", IMG_THRESHOLD_MIN_SQUARED_DISTANCE, Rgb{160, 40, 180}, "purple"},
      {"relative 0.5 (median)", IMG_THRESHOLD_RELATIVE, Rgb{0, 170, 170}, "teal"},
  };
  std::vector<Marker> markers;
  std::printf("\n%-24s %9s %14s %14s   %s\n", "mode", "threshold", "average below", "average above", "plot colour");
  for (const Mode& m : modes) {
    unsigned int t = m.value;
    float below = 0.f, above = 0.f;
    ImgHistogramThreshold(&histogram, t, below, above, 0.5f, 0, 255);
    if (EGetError() != E_OK) {
      std::printf("%-24s failed: %s\n", m.name, EGetErrorText(EGetError()));
      continue;
    }
    std::printf("%-24s %9u %14.2f %14.2f   %s\n", m.name, t, below, above, m.colourName);
    markers.push_back({m.name, t, m.colour, false});
  }
  std::printf("(the two distance modes report the mean cost of each class, not its mean grey level)\n");

  float below = 0.f, above = 0.f;
  EBW8 t2 = 0;
  const float residue = ImgTwoLevelsMinResidueThreshold(&histogram, t2, below, above);
  const unsigned int iso = ImgIsodataThreshold(&histogram, 0, 255);
  EBW8 lowT = 0, highT = 0;
  float lowA = 0.f, midA = 0.f, highA = 0.f;
  const float residue3 = ImgThreeLevelsMinResidueThreshold(&histogram, lowT, highT, lowA, midA, highA);
  std::printf("\ntwo classes:   threshold %u, residue %.2f grey levels (rms distance to the class mean)\n",
              static_cast<unsigned>(t2), residue);
  std::printf("iterative isodata: threshold %u\n", iso);
  std::printf("three classes: thresholds %u and %u, averages %.2f / %.2f / %.2f, residue %.2f (dashed in black)\n",
              static_cast<unsigned>(lowT), static_cast<unsigned>(highT), lowA, midA, highA, residue3);
  markers.push_back({"three classes, low", lowT, Rgb{0, 0, 0}, true});
  markers.push_back({"three classes, high", highT, Rgb{0, 0, 0}, true});

  EImage<EBW8> binary(image.GetWidth(), image.GetHeight());
  if (ImgThreshold(&image, &binary, IMG_THRESHOLD_MIN_RESIDUE, 0, 255, 0.f) != 0) {
    std::fprintf(stderr, "threshold_demo: %s (%s)\n", EGetErrorText(EGetError()), EGetErrorTrace());
    return 1;
  }
  double white = 0;
  for (int y = 0; y < binary.GetHeight(); ++y)
    for (int x = 0; x < binary.GetWidth(); ++x) white += binary.GetImagePtr(x, y)->value == 255;
  const double total = static_cast<double>(image.GetWidth()) * image.GetHeight();
  std::printf("\nbinarized with the minimum-residue mode of ImgThreshold: %.1f%% of the pixels white\n",
              100.0 * white / total);

  std::error_code ec;
  std::filesystem::create_directories(outDir, ec);
  if (ec) {
    std::fprintf(stderr, "threshold_demo: cannot make %s: %s\n", outDir.c_str(), ec.message().c_str());
    return 1;
  }
  const std::string written[] = {
      WritePicture(outDir + "/source", FromImage(image)),
      WritePicture(outDir + "/histogram", Plot(histogram.GetDataPtr(), markers)),
      WritePicture(outDir + "/binary", FromImage(binary)),
  };
  std::printf("\nwritten:\n");
  for (const std::string& path : written) {
    if (path.empty()) {
      std::fprintf(stderr, "threshold_demo: writing into %s failed\n", outDir.c_str());
      return 1;
    }
    std::printf("  %s\n", path.c_str());
  }
  return 0;
}
