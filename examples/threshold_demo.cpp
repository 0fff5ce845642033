// threshold_demo: picks a binarization threshold for a grey image with every
// selection mode of MirelImage, binarizes it with the minimum-residue
// threshold and writes the source, a plot of its histogram with the
// thresholds marked, the binary result, and the source with the contours of
// the objects that the threshold finds drawn over it. The plot and the
// contours are drawn with the library's raster drawing adapter.
//
//   threshold_demo [image] [--out DIR]
//
// With no image it makes a camera-like frame of its own: a shaded
// background, a few parts and noise. It reads and writes its images through
// Mirel::IO: PGM, PPM, PNG, JPEG or TIFF in, 8 or 16 bits (16-bit images
// keep their high byte), colour turned to grey; PNG out, into DIR (default
// "out"), or PGM and PPM where Mirel::IO was built without libpng.
#include <mirel/io/image_file.h>
#include <mirel/mirel.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

namespace {

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

// Writes `stem`.png, or .pgm/.ppm without PNG; returns the path written,
// empty on failure.
template <class T>
std::string WriteImage(const std::string& stem, const EROI<T>& image) {
  const char* portable = std::is_same<T, EC24>::value ? ".ppm" : ".pgm";
  const std::string path = stem + (ImgImageFileFormatAvailable(E_IMAGE_FILE_PNG) ? ".png" : portable);
  ImgSave(&image, path.c_str());
  if (EGetError() != E_OK) {
    ReportError(path);
    return std::string();
  }
  return path;
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

// ---------------------------------------------------------------- drawing

using Corvane::DrawColor;

struct Marker {
  const char* name;
  unsigned int threshold;
  DrawColor colour;
  bool dashed;
};

// Mirel::IO keeps red in component 2 of an EC24 pixel, as Windows bitmaps do.
Corvane::RasterDrawAdapter AdapterOn(EImage<EC24>& canvas) {
  return Corvane::RasterDrawAdapter(&canvas, Corvane::ColorOrder::BlueGreenRed);
}

// The histogram as EBWHistogramVector::Draw plots it, a grey-level ramp
// beneath, a vertical line at each threshold over the first column of its
// bin, and a legend. The first marker is drawn last and twice as wide, so
// that it stays in sight where thresholds coincide.
void PlotHistogram(const EBWHistogramVector& histogram, const std::vector<Marker>& markers, EImage<EC24>& plot) {
  const int w = 600, h = 380, rampH = 12;
  plot.SetSize(w, h);
  ImgCopy(EC24(255, 255, 255), &plot);
  Corvane::RasterDrawAdapter adapter = AdapterOn(plot);
  adapter.SetPenColor(DrawColor(70, 70, 80));
  adapter.SetTextColor(DrawColor(0, 0, 0));
  histogram.Draw(&adapter, 8.0f, 8.0f, static_cast<float>(w - 16), static_cast<float>(h - 16 - rampH - 6));
  const EPlot& view = histogram.GetPlot();

  EImage<EBW8> ramp(256, 1);
  for (int i = 0; i < 256; ++i) ramp.SetPixel(EBW8(static_cast<unsigned char>(i)), i, 0);
  const int columns = view.XView(256) - view.GetLeft();
  adapter.DrawImage(&ramp, view.GetLeft(), h - 8 - rampH, columns / 256.0f, static_cast<float>(rampH), 1.0,
                    Corvane::CurrentColor);

  for (size_t k = markers.size(); k-- > 0;) {
    const Marker& m = markers[k];
    if (m.threshold > 256) continue;
    const int x = view.XView(m.threshold);
    for (int y = view.GetTop(); y < view.GetBaseline(); y += m.dashed ? 12 : view.GetBaseline()) {
      const int end = m.dashed ? std::min(y + 5, view.GetBaseline()) : view.GetBaseline();
      adapter.DrawLine(x, y, x, end, m.colour);
      if (k == 0) adapter.DrawLine(x - 1, y, x - 1, end, m.colour);
    }
  }
  int y = view.GetTop() + 4;
  for (const Marker& m : markers) {
    if (m.dashed) continue;
    char text[64];
    std::snprintf(text, sizeof text, "%s %u", m.name, m.threshold);
    const int right = view.GetRight() - 4;
    const int width = static_cast<int>(adapter.MeasureText(text).m_f64Width) + 4;
    adapter.DrawTextBox(text, right - width, y, m.colour, DrawColor(255, 255, 255));
    y += 12;
  }
}

// The source in colour with the contours of the objects (pixels at or
// above the threshold) drawn over it: contours are started from the first
// object pixel after a background one on every eighth row, each traced once;
// those of fewer than `shortest` points are left out as noise. Returns the
// number drawn.
int DrawContours(const EImage<EBW8>& image, unsigned int threshold, EImage<EC24>& canvas) {
  const int w = image.GetWidth(), h = image.GetHeight(), shortest = 40;
  canvas.SetSize(w, h);
  Corvane::RasterDrawAdapter adapter = AdapterOn(canvas);
  adapter.DrawImage(&image, 0, 0, 1.0f, 1.0f, 1.0, Corvane::CurrentColor);
  std::vector<unsigned char> traced(static_cast<size_t>(w) * h, 0);
  const DrawColor colours[] = {DrawColor(255, 60, 40), DrawColor(40, 220, 60), DrawColor(60, 140, 255),
                               DrawColor(255, 200, 0), DrawColor(230, 60, 230)};
  int drawn = 0;
  for (int y = 4; y < h; y += 8) {
    const EBW8* row = image.GetImagePtr(0, y);
    for (int x = 1; x < w; ++x) {
      if (row[x] < threshold || row[x - 1] >= threshold || traced[static_cast<size_t>(y) * w + x]) continue;
      EPathVector contour;
      ImgContour(&image, CONTOUR_CLOCKWISE_WRAP, x, y, CONTOUR_THRESHOLD_ABOVE, threshold, CONNEXITY_8, &contour);
      if (EGetError() != E_OK) continue;
      for (unsigned int i = 0; i < contour.GetNumElements(); ++i)
        traced[static_cast<size_t>(contour[i].m_n16Y) * w + contour[i].m_n16X] = 1;
      if (contour.GetNumElements() < static_cast<unsigned int>(shortest)) continue;
      adapter.SetPenColor(colours[drawn % 5]);
      contour.Draw(&adapter, 1.0f, 1.0f, 0.0f, 0.0f);
      ++drawn;
    }
  }
  return drawn;
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
    DrawColor colour;
    const char* colourName;
  };
  const Mode modes[] = {
      {"minimum residue", IMG_THRESHOLD_MIN_RESIDUE, DrawColor(220, 30, 30), "red, bold"},
      {"maximum entropy", IMG_THRESHOLD_MAX_ENTROPY, DrawColor(30, 150, 40), "green"},
      {"isodata (exhaustive)", IMG_THRESHOLD_ISODATA, DrawColor(30, 80, 220), "blue"},
      {"min distance", IMG_THRESHOLD_MIN_DISTANCE, DrawColor(230, 140, 0), "orange"},
      {"min squared distance", IMG_THRESHOLD_MIN_SQUARED_DISTANCE, DrawColor(160, 40, 180), "purple"},
      {"relative 0.5 (median)", IMG_THRESHOLD_RELATIVE, DrawColor(0, 170, 170), "teal"},
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
  markers.push_back({"three classes, low", lowT, DrawColor(0, 0, 0), true});
  markers.push_back({"three classes, high", highT, DrawColor(0, 0, 0), true});

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
  EImage<EC24> plot, contours;
  PlotHistogram(histogram, markers, plot);
  const int objects = DrawContours(image, markers.empty() ? 128u : markers[0].threshold, contours);
  std::printf("contours of %d objects drawn over the source\n", objects);
  const std::string written[] = {
      WriteImage(outDir + "/source", image),
      WriteImage(outDir + "/histogram", plot),
      WriteImage(outDir + "/binary", binary),
      WriteImage(outDir + "/contours", contours),
  };
  std::printf("\nwritten:\n");
  for (const std::string& path : written) {
    if (path.empty()) return 1;
    std::printf("  %s\n", path.c_str());
  }
  return 0;
}
