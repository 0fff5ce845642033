// threshold_demo: picks a binarization threshold for a grey image with every
// selection mode of MirelImage, binarizes it with the minimum-residue
// threshold and writes the source, a plot of its histogram with the
// thresholds marked, and the binary result.
//
//   threshold_demo [image] [--out DIR]
//
// With no image it makes a camera-like frame of its own: a shaded
// background, a few parts and noise. It reads and writes its images through
// Mirel::IO: PGM, PPM, PNG, JPEG or TIFF in, 8 or 16 bits (16-bit images
// keep their high byte), colour turned to grey; PNG out, into DIR (default
// "out").
#include <mirel/io/image_file.h>
#include <mirel/mirel.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

// A plain picture in memory: 1 (grey) or 3 (colour) bytes a pixel.
struct Picture {
  int width = 0;
  int height = 0;
  int channels = 1;
  std::vector<unsigned char> pixels;
};

// ---------------------------------------------------------------- files

void ReportError(const std::string& path) {
  std::fprintf(stderr, "threshold_demo: %s: %s (%s)\n", path.c_str(), EGetErrorText(EGetError()), EGetErrorTrace());
}

// Loads any image that Mirel::IO reads as 8-bit grey. Colour becomes grey
// with the usual luma weights; 16-bit grey keeps its high byte.
bool LoadGrey(const std::string& path, EImage<EBW8>& image, bool& colour) {
  E_IMAGE_TYPES type = E_IMAGE_TYPE_BW8;
  ImgImageFileInfo(path.c_str(), nullptr, nullptr, &type);
  colour = type == E_IMAGE_TYPE_C24;
  if (EGetError() == E_OK && type == E_IMAGE_TYPE_BW8) {
    ImgLoad(path.c_str(), &image);
  } else if (EGetError() == E_OK && type == E_IMAGE_TYPE_BW16) {
    EImage<EBW16> deep;
    ImgLoad(path.c_str(), &deep);
    if (EGetError() == E_OK) image.SetSize(&deep);
    if (EGetError() == E_OK) ImgConvert(&deep, &image, 8);
  } else if (EGetError() == E_OK) {
    EImage<EC24> rgb;
    ImgLoad(path.c_str(), &rgb);
    if (EGetError() == E_OK) image.SetSize(&rgb);
    for (int y = 0; EGetError() == E_OK && y < rgb.GetHeight(); ++y) {
      const EC24* p = rgb.GetImagePtr(0, y);
      EBW8* row = image.GetImagePtr(0, y);
      // Component 2 is red, 1 green, 0 blue.
      for (int x = 0; x < rgb.GetWidth(); ++x)
        row[x] = static_cast<unsigned char>((299 * p[x][2] + 587 * p[x][1] + 114 * p[x][0] + 500) / 1000);
    }
  }
  if (EGetError() != E_OK) ReportError(path);
  return EGetError() == E_OK;
}

// Writes `stem`.png; returns the path written, empty on failure.
template <class T>
std::string WriteImage(const std::string& stem, const EROI<T>& image) {
  const std::string path = stem + ".png";
  ImgSave(&image, path.c_str());
  if (EGetError() != E_OK) {
    ReportError(path);
    return std::string();
  }
  return path;
}

// The plot's red, green, blue bytes become EC24 components 2, 1, 0.
std::string WritePicture(const std::string& stem, const Picture& pic) {
  EImage<EC24> image(pic.width, pic.height);
  for (int y = 0; y < pic.height; ++y) {
    const unsigned char* p = pic.pixels.data() + static_cast<size_t>(y) * pic.width * 3;
    for (int x = 0; x < pic.width; ++x, p += 3) image.SetPixel(EC24(p[2], p[1], p[0]), x, y);
  }
  return WriteImage(stem, image);
}

// ---------------------------------------------------------------- images

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
      "  image   PGM, PPM, PNG, JPEG or TIFF; without it a frame is made up\n"
      "  --out   folder for the results (default: out)\n");
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
    bool colour = false;
    if (!LoadGrey(input, image, colour)) return 1;
    std::printf("Source: %s, %d x %d%s\n", input.c_str(), image.GetWidth(), image.GetHeight(),
                colour ? " (colour, taken as grey)" : "");
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
      WriteImage(outDir + "/source", image),
      WritePicture(outDir + "/histogram", Plot(histogram.GetDataPtr(), markers)),
      WriteImage(outDir + "/binary", binary),
  };
  std::printf("\nwritten:\n");
  for (const std::string& path : written) {
    if (path.empty()) return 1;
    std::printf("  %s\n", path.c_str());
  }
  return 0;
}
