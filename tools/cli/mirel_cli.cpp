// mirel: the library's operations on image files, from the command line.
//
//   mirel list                       the operations, one a line
//   mirel help OPERATION             its arguments and what it does
//   mirel OPERATION IN OUT [ARGS]    an image-to-image operation
//   mirel histogram IN               "value count" for every non-empty bin
//   mirel threshold IN [MODE [REL]]  the threshold a mode chooses
//   mirel stats IN                   size, extremes, mean and deviation
//
// Files are PGM, PPM, PNG, JPEG and TIFF (Mirel::IO): grey files load as
// 8-bit or 16-bit images, colour files as EC24, and the output's format
// follows its extension. Colour images go to the number commands as grey
// (ImgConvert). A failed library call prints its text, code and trace on
// stderr and exits with 1; a usage error exits with 2.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "mirel/io/image_file.h"
#include "mirel/mirel.h"

namespace {

// ---------------------------------------------------------------- errors

struct UsageError {
  std::string message;
};
struct LibraryError {};

// Throws LibraryError after printing the error state, when a code is set.
void Check() {
  const E_ERRORS code = EGetError();
  if (code == E_OK) return;
  std::fprintf(stderr, "mirel: %s (code %d): %s\n", EGetErrorText(code), static_cast<int>(code), EGetErrorTrace());
  if (static_cast<int>(code) >= 1000) throw LibraryError{};
}

// ---------------------------------------------------------------- arguments

// An operation's parameter: its name and its default ("" when required).
struct Param {
  const char* name;
  const char* fallback;
};

class Args {
 public:
  Args(const char* op, const std::vector<Param>& params, const std::vector<std::string>& given)
      : op_(op), params_(params), given_(given) {
    if (given.size() > params.size())
      throw UsageError{std::string(op) + " takes at most " + std::to_string(params.size()) + " arguments"};
    for (std::size_t i = given.size(); i < params.size(); ++i)
      if (*params[i].fallback == '\0')
        throw UsageError{std::string(op) + " needs the argument " + params[i].name};
  }
  double Number(std::size_t i) const {
    const std::string text = i < given_.size() ? given_[i] : params_[i].fallback;
    char* end = nullptr;
    const double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0')
      throw UsageError{std::string(op_) + ": " + params_[i].name + " must be a number, not '" + text + "'"};
    return v;
  }
  int Int(std::size_t i) const {
    const double v = Number(i);
    if (v != static_cast<double>(static_cast<long long>(v)) || v < -2147483648.0 || v > 2147483647.0)
      throw UsageError{std::string(op_) + ": " + params_[i].name + " must be an integer"};
    return static_cast<int>(v);
  }
  unsigned Unsigned(std::size_t i) const {
    const int v = Int(i);
    if (v < 0) throw UsageError{std::string(op_) + ": " + params_[i].name + " must not be negative"};
    return static_cast<unsigned>(v);
  }
  float Float(std::size_t i) const { return static_cast<float>(Number(i)); }
  std::string Text(std::size_t i) const { return i < given_.size() ? given_[i] : params_[i].fallback; }

 private:
  const char* op_;
  const std::vector<Param>& params_;
  const std::vector<std::string>& given_;
};

// A threshold: a number, or the name of a mode.
unsigned ThresholdOf(const std::string& text, const char* op) {
  static const std::pair<const char*, IMG_THRESHOLD_MODES> modes[] = {
      {"min_residue", IMG_THRESHOLD_MIN_RESIDUE},       {"max_entropy", IMG_THRESHOLD_MAX_ENTROPY},
      {"isodata", IMG_THRESHOLD_ISODATA},               {"min_distance", IMG_THRESHOLD_MIN_DISTANCE},
      {"min_squared_distance", IMG_THRESHOLD_MIN_SQUARED_DISTANCE}, {"relative", IMG_THRESHOLD_RELATIVE},
  };
  for (const auto& m : modes)
    if (text == m.first) return m.second;
  char* end = nullptr;
  const long v = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || v < 0)
    throw UsageError{std::string(op) + ": a threshold is a number or a mode (min_residue, max_entropy, isodata, "
                                       "min_distance, min_squared_distance, relative), not '" + text + "'"};
  return static_cast<unsigned>(v);
}

// ---------------------------------------------------------------- images

// The image of a file: 8-bit, 16-bit or colour, as the file holds.
struct Picture {
  E_IMAGE_TYPES type = E_IMAGE_TYPE_BW8;
  EImage<EBW8> bw8;
  EImage<EBW16> bw16;
  EImage<EC24> c24;
};

void Load(const std::string& path, Picture* p) {
  EOk();
  ImgImageFileInfo(path.c_str(), nullptr, nullptr, &p->type);
  Check();
  if (p->type == E_IMAGE_TYPE_BW16)
    ImgLoad(path.c_str(), &p->bw16);
  else if (p->type == E_IMAGE_TYPE_C24)
    ImgLoad(path.c_str(), &p->c24);
  else
    ImgLoad(path.c_str(), &p->bw8);
  Check();
}

// The picture as an 8-bit grey image (colour converted), for the number
// commands; 16-bit pictures stay 16-bit.
EImage<EBW8>& Grey(Picture* p) {
  if (p->type == E_IMAGE_TYPE_C24) {
    EOk();
    p->bw8.SetSize(p->c24.GetWidth(), p->c24.GetHeight());
    Check();
    ImgConvert(&p->c24, &p->bw8);
    Check();
    p->type = E_IMAGE_TYPE_BW8;
  }
  return p->bw8;
}

// The output size of an operation: the source's unless it says otherwise.
using SizeRule = void (*)(const Args&, int& width, int& height);
void SameSize(const Args&, int&, int&) {}

// Runs op(src, dst) on the picture's kind when the library has that form;
// dst is sized by `size` and saved to `out`.
template <class T, class Op>
bool Apply(EImage<T>& src, const std::string& out, const Args& args, SizeRule size, Op& op, const char* name) {
  if constexpr (std::is_invocable<Op&, EImage<T>*, EImage<T>*>::value) {
    int width = src.GetWidth(), height = src.GetHeight();
    size(args, width, height);
    EImage<T> dst;
    EOk();
    dst.SetSize(width, height);
    Check();
    EOk();
    op(&src, &dst);
    Check();
    EOk();
    ImgSave(&dst, out.c_str());
    Check();
    return true;
  } else {
    (void)src, (void)out, (void)args, (void)size, (void)op, (void)name;
    return false;
  }
}

// ---------------------------------------------------------------- operations

struct Operation {
  const char* name;
  const char* help;
  std::vector<Param> params;
  // Runs on the loaded picture and writes `out`; false when the picture's
  // kind is not one the operation takes.
  bool (*run)(Picture&, const std::string& out, const Args&);
};

// An image-to-image operation whose call is `body` with `s`, `d` and `a`
// (the Args) in scope.
#define MIREL_CLI_OP(name, help, size, body, ...)                                                             \
  Operation {                                                                                                  \
    name, help, {__VA_ARGS__}, [](Picture& p, const std::string& out, const Args& a) {                         \
      auto op = [&](auto* s, auto* d) -> decltype(body) { return body; };                                     \
      (void)a;                                                                                                 \
      switch (p.type) {                                                                                        \
        case E_IMAGE_TYPE_BW16: return Apply(p.bw16, out, a, size, op, name);                                   \
        case E_IMAGE_TYPE_C24: return Apply(p.c24, out, a, size, op, name);                                     \
        default: return Apply(p.bw8, out, a, size, op, name);                                                   \
      }                                                                                                        \
    }                                                                                                          \
  }
#define MIREL_CLI_FILTER(name, fn) MIREL_CLI_OP(name, "The 3x3 filter " #fn ".", SameSize, fn(s, d))

void HalfSize(const Args& a, int& w, int& h) {
  const bool drop = a.Int(0) != 0;
  w = drop ? w / 2 : (w + 1) / 2;
  h = drop ? h / 2 : (h + 1) / 2;
}
void GivenSize(const Args& a, int& w, int& h) {
  w = a.Int(0);
  h = a.Int(1);
  if (w <= 0 || h <= 0) throw UsageError{"the width and height must be positive"};
}

const std::vector<Operation>& Operations() {
  static const std::vector<Operation> ops = {
      MIREL_CLI_FILTER("sobel_x", ImgConvolSobelX),
      MIREL_CLI_FILTER("sobel_y", ImgConvolSobelY),
      MIREL_CLI_FILTER("sobel", ImgConvolSobel),
      MIREL_CLI_FILTER("prewitt_x", ImgConvolPrewittX),
      MIREL_CLI_FILTER("prewitt_y", ImgConvolPrewittY),
      MIREL_CLI_FILTER("prewitt", ImgConvolPrewitt),
      MIREL_CLI_FILTER("gradient_x", ImgConvolGradientX),
      MIREL_CLI_FILTER("gradient_y", ImgConvolGradientY),
      MIREL_CLI_FILTER("gradient", ImgConvolGradient),
      MIREL_CLI_FILTER("laplacian_x", ImgConvolLaplacianX),
      MIREL_CLI_FILTER("laplacian_y", ImgConvolLaplacianY),
      MIREL_CLI_FILTER("laplacian_4", ImgConvolLaplacian4),
      MIREL_CLI_FILTER("laplacian_8", ImgConvolLaplacian8),
      MIREL_CLI_FILTER("highpass_1", ImgConvolHighpass1),
      MIREL_CLI_FILTER("highpass_2", ImgConvolHighpass2),
      MIREL_CLI_FILTER("lowpass_1", ImgConvolLowpass1),
      MIREL_CLI_FILTER("lowpass_2", ImgConvolLowpass2),
      MIREL_CLI_FILTER("lowpass_3", ImgConvolLowpass3),
      MIREL_CLI_FILTER("uniform_3x3", ImgConvolUniform3x3),
      MIREL_CLI_FILTER("gaussian_3x3", ImgConvolGaussian3x3),
      MIREL_CLI_FILTER("roberts", ImgConvolRoberts),
      MIREL_CLI_OP("uniform_5x5", "The exact 5x5 box mean.", SameSize, ImgConvolUniform5x5(s, d)),
      MIREL_CLI_OP("gaussian_5x5", "The exact 5x5 binomial filter.", SameSize, ImgConvolGaussian5x5(s, d)),
      MIREL_CLI_OP("uniform_7x7", "The exact 7x7 box mean.", SameSize, ImgConvolUniform7x7(s, d)),
      MIREL_CLI_OP("gaussian_7x7", "The exact 7x7 binomial filter.", SameSize, ImgConvolGaussian7x7(s, d)),
      MIREL_CLI_OP("uniform", "Box mean over (2 HX + 1) x (2 HY + 1) pixels.", SameSize,
                   ImgConvolUniform(s, d, a.Unsigned(0), a.Unsigned(1)), {"HX", ""}, {"HY", ""}),
      MIREL_CLI_OP("gaussian", "HX (HY) passes of 1 2 1 across (down).", SameSize,
                   ImgConvolGaussian(s, d, a.Unsigned(0), a.Unsigned(1)), {"HX", ""}, {"HY", ""}),
      MIREL_CLI_OP("local_deviation", "The standard deviation over (2 HX + 1) x (2 HY + 1) pixels.", SameSize,
                   ImgLocalDeviation(s, d, a.Unsigned(0), a.Int(1)), {"HX", ""}, {"HY", ""}),
      MIREL_CLI_OP("erode_box", "Minimum over a box of half sizes HW, HH.", SameSize,
                   ImgErodeBox(s, d, a.Unsigned(0), a.Unsigned(1)), {"HW", "1"}, {"HH", "1"}),
      MIREL_CLI_OP("dilate_box", "Maximum over a box of half sizes HW, HH.", SameSize,
                   ImgDilateBox(s, d, a.Unsigned(0), a.Unsigned(1)), {"HW", "1"}, {"HH", "1"}),
      MIREL_CLI_OP("open_box", "Erosion then dilation by a box.", SameSize,
                   ImgOpenBox(s, d, a.Unsigned(0), a.Unsigned(1)), {"HW", "1"}, {"HH", "1"}),
      MIREL_CLI_OP("close_box", "Dilation then erosion by a box.", SameSize,
                   ImgCloseBox(s, d, a.Unsigned(0), a.Unsigned(1)), {"HW", "1"}, {"HH", "1"}),
      MIREL_CLI_OP("white_top_hat_box", "The image less its opening by a box.", SameSize,
                   ImgWhiteTopHatBox(s, d, a.Unsigned(0), a.Unsigned(1)), {"HW", "1"}, {"HH", "1"}),
      MIREL_CLI_OP("black_top_hat_box", "The closing by a box less the image.", SameSize,
                   ImgBlackTopHatBox(s, d, a.Unsigned(0), a.Unsigned(1)), {"HW", "1"}, {"HH", "1"}),
      MIREL_CLI_OP("morpho_gradient_box", "Dilation less erosion by a box.", SameSize,
                   ImgMorphoGradientBox(s, d, a.Unsigned(0), a.Unsigned(1)), {"HW", "1"}, {"HH", "1"}),
      MIREL_CLI_OP("erode_disk", "Minimum over a disk of half-width R.", SameSize, ImgErodeDisk(s, d, a.Unsigned(0)),
                   {"R", "1"}),
      MIREL_CLI_OP("dilate_disk", "Maximum over a disk of half-width R.", SameSize,
                   ImgDilateDisk(s, d, a.Unsigned(0)), {"R", "1"}),
      MIREL_CLI_OP("open_disk", "Opening by a disk.", SameSize, ImgOpenDisk(s, d, a.Unsigned(0)), {"R", "1"}),
      MIREL_CLI_OP("close_disk", "Closing by a disk.", SameSize, ImgCloseDisk(s, d, a.Unsigned(0)), {"R", "1"}),
      MIREL_CLI_OP("median", "The 3x3 median, edges repeated.", SameSize, ImgMedian(s, d)),
      MIREL_CLI_OP("binarize", "255 where the pixel is at least T (a number or a mode name), else 0.", SameSize,
                   ImgThreshold(s, d, ThresholdOf(a.Text(0), "binarize"), 0, 255, a.Float(1)), {"T", "min_residue"},
                   {"RELATIVE", "0"}),
      MIREL_CLI_OP("double_threshold", "0 below LOW, 128 from LOW to HIGH, 255 above HIGH.", SameSize,
                   ImgDoubleThreshold(s, d, a.Unsigned(0), a.Unsigned(1), 0, 128, 255), {"LOW", ""}, {"HIGH", ""}),
      MIREL_CLI_OP("local_mean_threshold", "255 where the pixel is at least its local mean plus OFFSET.", SameSize,
                   Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold(s, d, a.Int(0), a.Int(1)), {"HALF", "7"},
                   {"OFFSET", "0"}),
      MIREL_CLI_OP("equalize", "Histogram equalization.", SameSize, ImgEqualize(s, d)),
      MIREL_CLI_OP("invert", "The maximum less the pixel.", SameSize, ImgOper(ALO_INVERT, s, d)),
      MIREL_CLI_OP("gain_offset", "pixel * GAIN + OFFSET, saturated.", SameSize,
                   ImgGainOffset(s, d, a.Float(0), a.Float(1)), {"GAIN", ""}, {"OFFSET", "0"}),
      MIREL_CLI_OP("normalize", "Rescales to the mean MEAN and deviation DEV.", SameSize,
                   ImgNormalize(s, d, a.Float(0), a.Float(1)), {"MEAN", ""}, {"DEV", ""}),
      MIREL_CLI_OP("canny", "Canny edges (80 strong, 255 reached) with a 3x3 Gaussian and hysteresis.", SameSize,
                   (ImgCopy(EBW8(0), d), ImgCannyDetector(s, d, SMOOTH_GAUSSIAN_3X3, EDGE_FOLLOWING_HYSTERESIS))),
      MIREL_CLI_OP("anisotropic_diffusion", "Perona-Malik diffusion, N passes.", SameSize,
                   ImgAnisotropicDiffusion(s, d, a.Unsigned(0), 0), {"N", "1"}),
      MIREL_CLI_OP("mirror_horizontal", "Reverses every row.", SameSize, (ImgCopy(s, d), ImgHorizontalMirror(d))),
      MIREL_CLI_OP("mirror_vertical", "Reverses the order of the rows.", SameSize,
                   (ImgCopy(s, d), ImgVerticalMirror(d))),
      MIREL_CLI_OP("scale_rotate", "Scales by SCALE and turns by ANGLE degrees about the centre.", SameSize,
                   ImgScaleRotate(s, s->GetWidth() / 2.0f, s->GetHeight() / 2.0f, d->GetWidth() / 2.0f,
                                  d->GetHeight() / 2.0f, a.Float(1), a.Float(1), a.Float(0), d, a.Int(2)),
                   {"ANGLE", ""}, {"SCALE", "1"}, {"INTERPOLATION", "8"}),
      MIREL_CLI_OP("shrink", "Block averages down to WIDTH x HEIGHT.", GivenSize, ImgShrink(s, d), {"WIDTH", ""},
                   {"HEIGHT", ""}),
      MIREL_CLI_OP("halve", "2x2 block averages (DROP_ODD 1 drops an odd last row and column).", HalfSize,
                   ImgHalve(s, d, a.Int(0)), {"DROP_ODD", "0"}),
  };
  return ops;
}

const Operation* Find(const std::string& name) {
  for (const auto& op : Operations())
    if (name == op.name) return &op;
  return nullptr;
}

std::string Usage(const Operation& op) {
  std::string u = std::string("mirel ") + op.name + " IN OUT";
  for (const auto& p : op.params) u += *p.fallback ? std::string(" [") + p.name + "=" + p.fallback + "]" : std::string(" ") + p.name;
  return u;
}

// ---------------------------------------------------------------- number commands

int Histogram(const std::vector<std::string>& args) {
  if (args.size() != 1) throw UsageError{"usage: mirel histogram IN"};
  Picture p;
  Load(args[0], &p);
  EBWHistogramVector h;
  EOk();
  if (p.type == E_IMAGE_TYPE_BW16)
    ImgHistogram(&p.bw16, &h, 15, 16, 1);
  else
    ImgHistogram(&Grey(&p), &h);
  Check();
  for (unsigned i = 0; i < h.GetNumElements(); ++i)
    if (h.GetDataPtr()[i] != 0) std::printf("%u %u\n", i, h.GetDataPtr()[i]);
  return 0;
}

int Threshold(const std::vector<std::string>& args) {
  if (args.empty() || args.size() > 3) throw UsageError{"usage: mirel threshold IN [MODE [RELATIVE]]"};
  const unsigned mode = ThresholdOf(args.size() > 1 ? args[1] : "min_residue", "threshold");
  if (mode <= 65535) throw UsageError{"threshold: MODE is a mode name"};
  char* end = nullptr;
  const float relative = args.size() > 2 ? std::strtof(args[2].c_str(), &end) : 0.0f;
  if (args.size() > 2 && *end != '\0') throw UsageError{"threshold: RELATIVE must be a number"};
  Picture p;
  Load(args[0], &p);
  unsigned t = 0;
  EOk();
  if (p.type == E_IMAGE_TYPE_BW16)
    t = ImgAutoThreshold(&p.bw16, static_cast<IMG_THRESHOLD_MODES>(mode), relative);
  else
    t = ImgAutoThreshold(&Grey(&p), static_cast<IMG_THRESHOLD_MODES>(mode), relative);
  Check();
  std::printf("%u\n", t);
  return 0;
}

int Stats(const std::vector<std::string>& args) {
  if (args.size() != 1) throw UsageError{"usage: mirel stats IN"};
  Picture p;
  Load(args[0], &p);
  unsigned lo = 0, hi = 0;
  float mean = 0.0f, deviation = 0.0f;
  int width = 0, height = 0;
  EOk();
  if (p.type == E_IMAGE_TYPE_BW16) {
    EBW16 a(0), b(0);
    ImgPixelStat(&p.bw16, a, b, mean);
    Check();
    ImgPixelStdDev(&p.bw16, deviation, mean);
    lo = a;
    hi = b;
    width = p.bw16.GetWidth();
    height = p.bw16.GetHeight();
  } else {
    EImage<EBW8>& g = Grey(&p);
    unsigned char a = 0, b = 0;
    ImgPixelStat(&g, a, b, mean);
    Check();
    ImgPixelStdDev(&g, deviation, mean);
    lo = a;
    hi = b;
    width = g.GetWidth();
    height = g.GetHeight();
  }
  Check();
  std::printf("width %d\nheight %d\nmin %u\nmax %u\nmean %.6g\nstddev %.6g\n", width, height, lo, hi, mean, deviation);
  return 0;
}

int Run(int argc, char** argv) {
  if (argc < 2) throw UsageError{"usage: mirel list | help OPERATION | OPERATION IN OUT [ARGS] | histogram IN | "
                                 "threshold IN [MODE [RELATIVE]] | stats IN"};
  const std::string command = argv[1];
  const std::vector<std::string> rest(argv + 2, argv + argc);
  if (command == "list") {
    for (const auto& op : Operations()) std::printf("%s\n", op.name);
    std::printf("histogram\nthreshold\nstats\n");
    return 0;
  }
  if (command == "help") {
    if (rest.size() != 1) throw UsageError{"usage: mirel help OPERATION"};
    const Operation* op = Find(rest[0]);
    if (op == nullptr) throw UsageError{"no operation '" + rest[0] + "' (mirel list shows them)"};
    std::printf("%s\n  %s\n", Usage(*op).c_str(), op->help);
    return 0;
  }
  if (command == "histogram") return Histogram(rest);
  if (command == "threshold") return Threshold(rest);
  if (command == "stats") return Stats(rest);
  const Operation* op = Find(command);
  if (op == nullptr) throw UsageError{"no operation '" + command + "' (mirel list shows them)"};
  if (rest.size() < 2) throw UsageError{"usage: " + Usage(*op)};
  const std::vector<std::string> values(rest.begin() + 2, rest.end());
  const Args args(op->name, op->params, values);
  Picture p;
  Load(rest[0], &p);
  if (!op->run(p, rest[1], args)) {
    const char* kind = p.type == E_IMAGE_TYPE_BW16 ? "16-bit" : p.type == E_IMAGE_TYPE_C24 ? "colour" : "8-bit";
    throw UsageError{std::string(op->name) + " does not take " + kind + " images"};
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const UsageError& e) {
    std::fprintf(stderr, "mirel: %s\n", e.message.c_str());
    return 2;
  } catch (const LibraryError&) {
    return 1;
  }
}
