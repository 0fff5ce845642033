// The table of the operation fuzz target: every exported operation, one
// line each, its overload chosen by its signature. Options bound the
// arguments that set an operation's cost (so that one call stays quick
// under the sanitizers) and name the bytes an operation is documented to
// write behind a row. Members of classes are reached through the small
// functions below, whose arguments are made like any other.
//
// A new operation adds its line here, in its header's group.
#include <sstream>

#include "fuzz_ops.h"
#include "mirel/foundation/plot.h"
#include "mirel/vector/draw/raster_draw_adapter.h"
#include "mirel/vector/draw/svg_draw_adapter.h"

namespace fuzzops {
namespace {

// ---------------------------------------------------------------- members

void PyramidFromSource(const EROI<EBW8>* source, unsigned int levels, E_IMAGE_TYPES type,
                       IMG_PYRAMIDAL_REDUCTION_MODE mode, int dropOdd, unsigned int level) {
  EPyramid pyramid;
  pyramid.SetNumLevels(levels, type);
  if (EGetError() != E_OK) return;
  pyramid.SetReductionMode(mode);
  pyramid.SetDropOdd(dropOdd);
  pyramid.Build(source);
  if (EGetError() != E_OK) return;
  pyramid.GetImage(level);
}

// Build() from a level 0 the caller sized and filled.
void PyramidFromLevel(unsigned int levels, E_IMAGE_TYPES type, IMG_PYRAMIDAL_REDUCTION_MODE mode, int dropOdd,
                      int width, int height, unsigned char fill) {
  EPyramid pyramid;
  pyramid.SetNumLevels(levels, type);
  if (EGetError() != E_OK) return;
  pyramid.SetReductionMode(mode);
  pyramid.SetDropOdd(dropOdd);
  EGenericROI* first = pyramid.GetImage(0);
  if (first == nullptr) return;
  first->SetSize(width, height);
  if (EGetError() != E_OK) return;
  if (!first->Void())
    std::memset(first->GetImagePtr(0, 0), fill,
                static_cast<std::size_t>(first->GetRowPitch()) * static_cast<std::size_t>(first->GetHeight()));
  pyramid.Build();
}

// Frames fed in turn, in both forms; stops at the first failure.
void MovingAverage(const EROI<EBW8>* src, EROI<EBW8>* dst, unsigned int size, int width, int height,
                   int ownBuffer, unsigned int frames) {
  EMovingAverage average(size, width, height, ownBuffer);
  if (EGetError() != E_OK) return;
  for (unsigned int i = 0; i < frames; ++i) {
    if (i % 3 == 2) {
      EImage<EBW8>* own = average.GetSrcImage();
      if (EGetError() != E_OK) return;
      if (own != nullptr && src != nullptr) ImgCopy(src, own);
      EOk();
      average.Average(dst);
    } else {
      average.Average(src, dst);
    }
    if (EGetError() != E_OK) return;
  }
  average.Reset();
}

void KernelMembers(EKernel* kernel, int x, int y, float value, unsigned int allocated, short sizeX, short sizeY,
                   KERNEL_TYPE type) {
  if (kernel == nullptr) return;
  // A kernel of 32767 x 32767 is 4 GB that the caller asked for, not a
  // fault: sizes stay within what the fuzzer's images can use, negative and
  // zero ones included.
  sizeX = static_cast<short>(sizeX % 300);
  sizeY = static_cast<short>(sizeY % 300);
  allocated %= 1u << 20;
  float read = 0.0f;
  kernel->GetKernelData(x, y, read);
  kernel->SetKernelData(x, y, value);
  EKernel copy(*kernel);
  copy.SetAllocatedSize(allocated);
  copy.SetSizeX(sizeX);
  copy.SetSizeY(sizeY);
  copy.SetKernelData(value, value, value, value, value, value, value, value, value);
  *kernel = copy;
  kernel->SetKernel(type);
}

void HistogramEntropy(EBWHistogramVector* histogram, unsigned int first, unsigned int last) {
  if (histogram != nullptr) histogram->Entropy(first, last);
}

void HistogramDraw(const EBWHistogramVector* histogram, EROI<EC24>* target, float x, float y, float width,
                   float height) {
  if (histogram == nullptr) return;
  Corvane::RasterDrawAdapter adapter(target);
  histogram->Draw(&adapter, x, y, width, height);
}

template <class V>
void VectorDraw(const V* vector, EROI<EC24>* target, float zoomX, float zoomY, float panX, float panY) {
  if (vector == nullptr) return;
  Corvane::RasterDrawAdapter adapter(target, Corvane::ColorOrder::BlueGreenRed);
  vector->Draw(&adapter, zoomX, zoomY, panX, panY);
}

// One primitive of the raster adapter, and the same on the SVG adapter.
void Primitive(Corvane::DrawAdapter& a, int which, int x, int y, int w, int h, double angle, double sweep,
               const EGenericROI* image, float zoom) {
  const Corvane::DrawColor red(255, 0, 0), fill(x, y, w);
  Corvane::DrawPointArray points{{static_cast<double>(x), static_cast<double>(y)},
                                 {static_cast<double>(w), static_cast<double>(h)},
                                 {angle, sweep}};
  switch (which & 15) {
    case 0: a.DrawPixel(x, y, fill, angle); break;
    case 1: a.DrawLine(x, y, w, h, red); break;
    case 2: a.DrawArc(x, y, w, h, angle, sweep, red); break;
    case 3: a.DrawRectangle(x, y, w, h, red); break;
    case 4: a.DrawPolygon(points, red); break;
    case 5: a.DrawEllipse(x, y, w, h, fill); break;
    case 6: a.FillRectangle(x, y, w, h, red, fill); break;
    case 7: a.FillEllipse(x, y, w, h, red, fill); break;
    case 8: a.FillPolygon(points, red, fill); break;
    case 9: a.DrawText("Mirel\n12", x, y, fill); break;
    case 10: a.DrawTextBox("box", x, y, red, fill); break;
    case 11: a.MeasureText("two\nlines"); break;
    default: a.DrawImage(image, x, y, zoom, static_cast<float>(sweep), angle, fill); break;
  }
}
void RasterDraw(EROI<EC24>* target, int which, int x, int y, int w, int h, double angle, double sweep,
                const EROI<EBW8>* image, float zoom) {
  Corvane::RasterDrawAdapter adapter(target);
  Primitive(adapter, which, x, y, w, h, angle, sweep, image, zoom);
}
void SvgDraw(int width, int height, int which, int x, int y, int w, int h, double angle, double sweep,
             const EROI<EC24>* image, float zoom) {
  Corvane::SvgDrawAdapter adapter(width, height);
  Primitive(adapter, which, x, y, w, h, angle, sweep, image, zoom);
}

void ColorLookupMembers(EColorLookup* lookup, unsigned int component, unsigned char value, unsigned char mapped) {
  if (lookup == nullptr) return;
  unsigned char table[256];
  for (int i = 0; i < 256; ++i) table[i] = static_cast<unsigned char>(255 - i);
  lookup->SetEntry(component, value, mapped);
  lookup->SetComponentTable(component, table);
  EC24 out;
  lookup->Transform(EC24(value, mapped, value), out);
  lookup->SetIdentity();
}

void UntypedMembers(EVector* vector, int kind, int groups, int length, int dataSize, int dataType, int bytes) {
  if (vector == nullptr) return;
  EVector copy(*vector);
  copy.SetType(kind, groups, length);
  copy.SetStructure(dataSize, groups, length, dataType);
  copy.SetNbGroup(groups);
  copy.Reallocate(bytes);
  *vector = copy;
}

template <class V>
void TypedMembers(V* vector, int index, unsigned int count, int keep) {
  if (vector == nullptr) return;
  using R = std::remove_pointer_t<decltype(vector->GetDataPtr())>;
  R record;
  std::memset(static_cast<void*>(&record), 0x11, sizeof(R));
  vector->GetElement(index);
  vector->SetElement(index, record);
  (*vector)[static_cast<unsigned int>(index)];
  vector->RemoveElement(static_cast<unsigned int>(index));
  vector->AddElement(record);
  vector->Sift(record, [](const R& a, const R& b) { return std::memcmp(&a, &b, sizeof(R)) > 0 ? 1 : 0; });
  V copy(*vector);
  copy.SetMaxElements(count, keep);
  copy.CopyTo(vector);
}

// A copy of an image owns its pixels, also when the image borrows them;
// a move takes them.
template <class P>
void ImageCopyMove(const EImage<P>* image) {
  if (image == nullptr) return;
  EImage<P> copy(*image);
  EImage<P> moved(std::move(copy));
  EImage<P> assigned;
  assigned = moved;
  assigned = std::move(moved);
  EOk();
}

void RoiPlacement(EROI<EBW8>* roi, int x, int y, int w, int h) {
  if (roi == nullptr) return;
  EROI<EBW8> inner(roi, x, y, w, h);
  EOk();
  inner.SetPlacement(y, x, h, w);
  EOk();
  if (!inner.Void()) ImgCopy(EBW8(7), &inner);
}

// ---------------------------------------------------------------- grey morphology

#define MIREL_FUZZ_MORPHOLOGY(P)                                                                        \
  MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgErodeBox),                        \
  MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgErodeBox),                  \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgDilateBox),                   \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgDilateBox),             \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgOpenBox),                     \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgOpenBox),               \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgCloseBox),                    \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgCloseBox),              \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgWhiteTopHatBox),              \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgWhiteTopHatBox),        \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgBlackTopHatBox),              \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgBlackTopHatBox),        \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgMorphoGradientBox),           \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int, unsigned int), ImgMorphoGradientBox),     \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int), ImgErodeDisk, .Arg(2, 0, 40)),                 \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int), ImgErodeDisk, .Arg(2, 0, 40)),           \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int), ImgDilateDisk, .Arg(2, 0, 40)),                \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int), ImgDilateDisk, .Arg(2, 0, 40)),          \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int), ImgOpenDisk, .Arg(2, 0, 40)),                  \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int), ImgOpenDisk, .Arg(2, 0, 40)),            \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int), ImgCloseDisk, .Arg(2, 0, 40)),                 \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int), ImgCloseDisk, .Arg(2, 0, 40)),           \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int), ImgWhiteTopHatDisk, .Arg(2, 0, 40)),           \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int), ImgWhiteTopHatDisk, .Arg(2, 0, 40)),     \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int), ImgBlackTopHatDisk, .Arg(2, 0, 40)),           \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int), ImgBlackTopHatDisk, .Arg(2, 0, 40)),     \
      MIREL_OP(void(EROI<P>*, EROI<P>*, unsigned int), ImgMorphoGradientDisk, .Arg(2, 0, 40)),        \
      MIREL_OP(void(const EROI<P>*, EROI<P>*, unsigned int), ImgMorphoGradientDisk, .Arg(2, 0, 40)),

}  // namespace

const std::vector<Entry>& Table() {
  static const std::vector<Entry> table = {
      // mirel/edge/canny.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, SMOOTH_MODE, EDGE_FOLLOWING_MODE), ImgCannyDetector),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW32>*, EROI<EBW8>*), NonMaximaSuppression),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, const EImage<EBW32>*, unsigned char, unsigned char), Hysteresis),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, const EROI<EBW32>*, unsigned char), ContourGrowing),
      // mirel/edge/diffusion.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned char), ImgAnisotropicDiffusion, .Arg(2, 0, 20)),
      // mirel/edge/fourier.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EComplex64>*, float), ImgSlowDFT, .Area(1024)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EComplex64>*, float), ImgFastDFT),
      MIREL_OP(void(const EROI<EComplex64>*, EROI<EBW8>*, float, int, float), ImgComplexModulus),
      MIREL_OP(void(const EROI<EComplex64>*, EROI<EBW8>*, float, int, float), ImgComplexRescaledModulus),
      MIREL_OP(void(const EROI<EComplex64>*, EROI<EBW8>*), ImgComplexArgument),
      MIREL_OP(void(const EROI<EComplex64>*, EVector*), ImgComplexDiscEnergy),
      // mirel/edge/gradient.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW32>*), ImgGradientVector),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, const EROI<EBW8>*), ImgGradientScalar),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW8>*, const EROI<EBW8>*), ImgGradientScalar),
      MIREL_OP(void(EImage<EBW8>*, float), ImgModulusImage),
      MIREL_OP(void(EImage<EBW8>*, EBW8, float), ImgArgumentImage),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW32>*), ImgGradientVector),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, const EROI<EBW16>*), ImgGradientScalar),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW16>*, const EROI<EBW16>*), ImgGradientScalar),
      MIREL_OP(void(EImage<EBW16>*, float), ImgModulusImage),
      // mirel/filter/color_filters.h
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolHighpass1),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolHighpass1),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolHighpass2),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolHighpass2),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolLowpass1),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolLowpass1),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolLowpass2),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolLowpass2),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolLowpass3),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolLowpass3),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolSobelX),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolSobelX),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolSobelY),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolSobelY),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolSobel),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolSobel),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolPrewittX),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolPrewittX),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolPrewittY),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolPrewittY),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolPrewitt),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolPrewitt),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolGradientX),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolGradientX),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolGradientY),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolGradientY),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolGradient),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolGradient),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacianX),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacianX),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacianY),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacianY),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacian4),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacian4),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacian8),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolLaplacian8),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, unsigned int, unsigned int), ImgConvolGaussian, .Arg(2, 0, 40).Arg(3, 0, 40)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, unsigned int, unsigned int), ImgConvolGaussian, .Arg(2, 0, 40).Arg(3, 0, 40)),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, unsigned int, unsigned int), ImgConvolUniform),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, unsigned int, unsigned int), ImgConvolUniform),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, const EKernel*), ImgConvolKernel),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, const EKernel*), ImgConvolSymmetricKernel),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgConvolRoberts),
      // mirel/filter/convolution.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, const EKernel*), ImgConvolKernel),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, const EKernel*), ImgConvolSymmetricKernel),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, const EKernel*), ImgConvolKernel),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, const EKernel*), ImgConvolSymmetricKernel),
      // mirel/filter/fixed_filters.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolUniform5x5),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolGaussian5x5),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolUniform7x7),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolGaussian7x7),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolUniform5x5),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolGaussian5x5),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolUniform7x7),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolGaussian7x7),
      // mirel/filter/preset_filters.h
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolSobelX),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolSobelX),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolSobelY),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolSobelY),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolSobel),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolSobel),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolPrewittX),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolPrewittX),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolPrewittY),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolPrewittY),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolPrewitt),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolPrewitt),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolGradientX),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolGradientX),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolGradientY),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolGradientY),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolGradient),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolGradient),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacianX),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacianX),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacianY),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacianY),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacian4),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacian4),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacian8),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolLaplacian8),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolHighpass1),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolHighpass1),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolHighpass2),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolHighpass2),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolLowpass1),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolLowpass1),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolLowpass2),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolLowpass2),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolLowpass3),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolLowpass3),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolUniform3x3),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolUniform3x3),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolGaussian3x3),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolGaussian3x3),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgConvolRoberts),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgConvolRoberts),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolSobelX),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolSobelX),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolSobelY),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolSobelY),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolSobel),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolSobel),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolPrewittX),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolPrewittX),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolPrewittY),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolPrewittY),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolPrewitt),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolPrewitt),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolGradientX),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolGradientX),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolGradientY),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolGradientY),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolGradient),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolGradient),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacianX),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacianX),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacianY),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacianY),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacian4),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacian4),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacian8),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolLaplacian8),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolHighpass1),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolHighpass1),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolHighpass2),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolHighpass2),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolLowpass1),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolLowpass1),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolLowpass2),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolLowpass2),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolLowpass3),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolLowpass3),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolUniform3x3),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolUniform3x3),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolGaussian3x3),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolGaussian3x3),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*), ImgConvolRoberts),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgConvolRoberts),
      // mirel/filter/smoothing.h
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgConvolUniform),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgConvolUniform),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgConvolGaussian, .Arg(2, 0, 40).Arg(3, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgConvolGaussian, .Arg(2, 0, 40).Arg(3, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgLocalAverage),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgLocalAverage),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, int), ImgLocalDeviation),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*, unsigned int, unsigned int), ImgConvolUniform),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, unsigned int, unsigned int), ImgConvolUniform),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*, unsigned int, unsigned int), ImgConvolGaussian, .Arg(2, 0, 40).Arg(3, 0, 40)),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, unsigned int, unsigned int), ImgConvolGaussian, .Arg(2, 0, 40).Arg(3, 0, 40)),
      MIREL_OP(void(EROI<EBW16>*, EROI<EBW16>*, unsigned int, unsigned int), ImgLocalAverage),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, unsigned int, unsigned int), ImgLocalAverage),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, unsigned int, int), ImgLocalDeviation),
      // mirel/foundation/color.h
      MIREL_OP(void(const EROI<EC24>*, EROI<EBW8>*, unsigned int, const EColorLookup*), ClrGetComponent),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EC24>*, unsigned int), ClrSetComponent),
      // mirel/geometry/affine.h
      MIREL_OP(void(const EROI<EBW8>*, float, float, float, float, float, float, EROI<EBW8>*, int), ImgLinearTransform),
      MIREL_OP(void(const EROI<EBW16>*, float, float, float, float, float, float, EROI<EBW16>*, int), ImgLinearTransform),
      MIREL_OP(void(const EROI<EC24>*, float, float, float, float, float, float, EROI<EC24>*, int), ImgLinearTransform),
      MIREL_OP(short(const EROI<EBW8>*, float, float, float, float, float, float, float, EROI<EBW8>*, int), ImgScaleRotate),
      MIREL_OP(void(const EROI<EBW16>*, float, float, float, float, float, float, float, EROI<EBW16>*, int), ImgScaleRotate),
      MIREL_OP(void(const EROI<EC24>*, float, float, float, float, float, float, float, EROI<EC24>*, int), ImgScaleRotate),
      MIREL_OP(short(EROI<EBW8>*, float, float, float, float, float, float, float, int), ImgScaleRotate),
      MIREL_OP(void(EROI<EBW16>*, float, float, float, float, float, float, float, int), ImgScaleRotate),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, float, float, float, float, int), ImgRegister),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, float, float, float, float, int), ImgRegister),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, float, float, float, float, int), ImgRegister),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, float, float, float, float, float, float, float, float, int, int), ImgRegister),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, float, float, float, float, float, float, float, float, int, int), ImgRegister),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, float, float, float, float, float, float, float, float, int, int), ImgRegister),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, float, float, float, float, float, float, float, float, float, float, float, float, int), ImgRegister),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, float, float, float, float, float, float, float, float, float, float, float, float, int), ImgRegister),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, float, float, float, float, float, float, float, float, float, float, float, float, int), ImgRegister),
      // mirel/geometry/frames.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, int), ImgGetFrame),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, int), ImgSetFrame),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, int, unsigned int), ImgRealignFrame),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgRebuildFrame),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgSwapFrames),
      MIREL_OP(void(const EROI<EBW8>*, int, int, int, int&), ImgMatchFrames, .Arg(2, -300, 300).Arg(3, -300, 300)),
      MIREL_OP(float(const EROI<EBW8>*), ImgFocusing),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, int), ImgGetFrame),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, int), ImgSetFrame),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, int, unsigned int), ImgRealignFrame),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, unsigned int), ImgRebuildFrame),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgSwapFrames),
      MIREL_OP(void(const EROI<EBW16>*, int, int, int, int&), ImgMatchFrames, .Arg(2, -300, 300).Arg(3, -300, 300)),
      MIREL_OP(float(const EROI<EBW16>*), ImgFocusing),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int), ImgGetFrame),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int), ImgSetFrame),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, unsigned int), ImgRealignFrame),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, unsigned int), ImgRebuildFrame),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgSwapFrames),
      MIREL_OP(void(const EROI<EC24>*, int, int, int, int&), ImgMatchFrames, .Arg(2, -300, 300).Arg(3, -300, 300)),
      MIREL_OP(float(const EROI<EC24>*), ImgFocusing),
      // mirel/geometry/pyramid.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, int), ImgHalve),
      // mirel/geometry/shrink_mirror.h
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*), ImgShrink),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgShrink),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgShrink),
      MIREL_OP(void(EROI<EBW8>*), ImgHorizontalMirror),
      MIREL_OP(void(EROI<EBW16>*), ImgHorizontalMirror),
      MIREL_OP(void(EROI<EC24>*), ImgHorizontalMirror),
      MIREL_OP(void(EROI<EBW8>*), ImgVerticalMirror),
      MIREL_OP(void(EROI<EBW16>*), ImgVerticalMirror),
      MIREL_OP(void(EROI<EC24>*), ImgVerticalMirror),
      // mirel/geometry/temporal_average.h
      MIREL_OP(void(EBW16Vector*, float, float), ImgSetRecursiveAverageLUT),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW16>*, EROI<EBW8>*, const EBW16Vector*), ImgRecursiveAverage),
      // mirel/geometry/warp.h
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, const EImage<EBW16>*, const EImage<EBW16>*, int, int), ImgWarp),
      // A position outside the source stops the one-map form where it stands.
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, const EImage<EBW32>*), ImgWarp, .Partial()),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, const EImage<EBW16>*, const EImage<EBW16>*, int, int), ImgWarp),
      MIREL_OP(void(float, float, int, float, float, int, float, float, EImage<EBW16>*, EImage<EBW16>*), ImgSetCircleWarp, .Arg(2, -2, 400).Arg(5, -2, 400)),
      // mirel/histogram/histogram.h
      MIREL_OP(void(const EROI<EBW8>*, EBWHistogramVector*), ImgHistogram),
      MIREL_OP(void(const EROI<EBW16>*, EBWHistogramVector*, unsigned int, unsigned int, int), ImgHistogram, .Arg(2, 0, 40).Arg(3, 0, 24)),
      MIREL_OP(void(const EROI<EBW32>*, EBWHistogramVector*, unsigned int, unsigned int, int), ImgHistogram, .Arg(2, 0, 40).Arg(3, 0, 24)),
      MIREL_OP(short(const EROI<EBW8>*, EVector*), ImgHistogram),
      MIREL_OP(void(const EBWHistogramVector*, EBWHistogramVector*), ImgCumulateHistogram),
      MIREL_OP(void(const EBWHistogramVector*, EBW8Vector*), ImgSetupEqualize),
      MIREL_OP(void(const EVector*, EVector*), ImgSetupEqualize),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgEqualize),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgEqualize),
      MIREL_OP(float(const EBWHistogramVector*, IMG_HISTOGRAM_FEATURE, int, int), ImgAnalyseHistogram),
      MIREL_OP(float(const EBWHistogramVector*, IMG_HISTOGRAM_FEATURE, int, int), ImgAnalyseHistogramBW16),
      MIREL_OP(short(const EVector*, int, int, int, int&), ImgAnalyseHistogram),
      MIREL_OP(short(const EVector*, int, int, int, float&), ImgAnalyseHistogram),
      // mirel/histogram/local_threshold.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, IMG_THRESHOLD_MODES, int, int), ImgAutoAdaptiveThreshold),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, int, int), Corvane::Talmeer::Segmentation::ImgLocalMeanThreshold,
               .Untraced()),
      // mirel/histogram/multilevel_threshold.h
      MIREL_OP(float(const EBWHistogramVector*, unsigned int, Corvane::Talmeer::Utils::Vector<ERegionDescriptor>&), ImgMultiLevelsMinResidueThreshold, .Arg(1, 0, 12)),
      MIREL_OP(float(const EBWHistogramVector*, unsigned int, Corvane::Talmeer::Utils::Vector<EBW8>&), ImgMultiLevelsMinResidueThreshold, .Arg(1, 0, 12)),
      MIREL_OP(float(const EBWHistogramVector*, unsigned int, Corvane::Talmeer::Utils::Vector<ELabelisationDescriptor>&), ImgAllMultiLevelsMinResidueThreshold, .Arg(1, 0, 8)),
      // mirel/histogram/projection.h
      MIREL_OP(short(const EROI<EBW8>*, EBW32Vector*), ImgProjectOnARow),
      MIREL_OP(short(const EROI<EBW8>*, EBW8Vector*), ImgProjectOnARow),
      MIREL_OP(short(const EROI<EBW16>*, EBW32Vector*), ImgProjectOnARow),
      MIREL_OP(short(const EROI<EBW16>*, EBW16Vector*), ImgProjectOnARow),
      MIREL_OP(short(const EROI<EC24>*, EC24Vector*), ImgProjectOnARow),
      MIREL_OP(short(const EROI<EBW8>*, EVector*), ImgProjectOnARow),
      MIREL_OP(short(const EROI<EBW8>*, EBW32Vector*), ImgProjectOnAColumn),
      MIREL_OP(short(const EROI<EBW8>*, EBW8Vector*), ImgProjectOnAColumn),
      MIREL_OP(short(const EROI<EBW16>*, EBW32Vector*), ImgProjectOnAColumn),
      MIREL_OP(short(const EROI<EBW16>*, EBW16Vector*), ImgProjectOnAColumn),
      MIREL_OP(short(const EROI<EC24>*, EC24Vector*), ImgProjectOnAColumn),
      MIREL_OP(short(const EROI<EBW8>*, EVector*), ImgProjectOnAColumn),
      // mirel/histogram/threshold_selection.h
      MIREL_OP(void(const EBWHistogramVector*, unsigned int&, float&, float&, float, unsigned int, unsigned int), ImgHistogramThreshold),
      MIREL_OP(void(const EBWHistogramVector*, unsigned int&, float&, float&, float, unsigned int, unsigned int), ImgHistogramThresholdBW16),
      MIREL_OP(EBW8(const EROI<EBW8>*, IMG_THRESHOLD_MODES, float), ImgAutoThreshold),
      MIREL_OP(EBW16(const EROI<EBW16>*, IMG_THRESHOLD_MODES, float), ImgAutoThreshold),
      MIREL_OP(EBW8(const EBWHistogramVector*, float&, float&), ImgMinResidueThreshold),
      MIREL_OP(float(const EBWHistogramVector*, EBW8&, float&, float&), ImgTwoLevelsMinResidueThreshold),
      MIREL_OP(float(const EBWHistogramVector*, EBW8&, EBW8&, float&, float&, float&), ImgThreeLevelsMinResidueThreshold),
      MIREL_OP(EBW8(const EBWHistogramVector*, float&, float&), ImgMaxEntropyThreshold),
      MIREL_OP(EBW8(const EBWHistogramVector*, unsigned int, unsigned int), ImgIsodataThreshold),
      MIREL_OP(unsigned int(const EVector*, unsigned int, unsigned int), ImgIsodataThreshold),
      MIREL_OP(EBW16(const EBWHistogramVector*, unsigned int, unsigned int), ImgIsodataThresholdBW16),
      // mirel/measure/moments.h
      MIREL_OP(void(const EROI<EBW8>*, unsigned int, float&, float&, float&), ImgBinaryMoments),
      MIREL_OP(void(const EROI<EBW8>*, unsigned int, float&, float&, float&, float&, float&, float&), ImgBinaryMoments),
      MIREL_OP(void(const EROI<EBW16>*, unsigned int, float&, float&, float&), ImgBinaryMoments),
      MIREL_OP(void(const EROI<EBW16>*, unsigned int, float&, float&, float&, float&, float&, float&), ImgBinaryMoments),
      MIREL_OP(void(const EROI<EBW8>*, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW8>*, float&, float&, float&, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW8>*, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW8>*, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW16>*, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW16>*, float&, float&, float&, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW16>*, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW16>*, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&, float&), ImgWeightedMoments),
      MIREL_OP(void(const EROI<EBW8>*, unsigned int, float&, float&), ImgGravityCenter),
      MIREL_OP(void(const EROI<EBW16>*, unsigned int, float&, float&), ImgGravityCenter),
      MIREL_OP(void(const EROI<EBW8>*, float&, float&, const EBW8Vector*), ImgCentroid),
      MIREL_OP(void(const EROI<EBW8>*, unsigned int, float&, float&, float&, float*, float*, unsigned int*), ImgInertia),
      MIREL_OP(void(const EROI<EBW8>*, float&, float&, float&, float*, float*, unsigned int*, const EBW8Vector*), ImgInertia),
      // mirel/measure/noise.h
      MIREL_OP(float(const EROI<EBW8>*, const EROI<EBW8>*, IMG_REFERENCE_NOISE), ImgRmsNoise),
      MIREL_OP(float(const EROI<EBW8>*, const EROI<EBW16>*, unsigned int, IMG_REFERENCE_NOISE), ImgRmsNoise),
      MIREL_OP(float(const EROI<EBW16>*, const EROI<EBW16>*, IMG_REFERENCE_NOISE), ImgRmsNoise),
      MIREL_OP(float(const EROI<EC24>*, const EROI<EC24>*, IMG_REFERENCE_NOISE), ImgRmsNoise),
      MIREL_OP(float(const EROI<EBW8>*, const EROI<EBW8>*, IMG_REFERENCE_NOISE), ImgSignalNoiseRatio),
      MIREL_OP(float(const EROI<EBW8>*, const EROI<EBW16>*, unsigned int, IMG_REFERENCE_NOISE), ImgSignalNoiseRatio),
      MIREL_OP(float(const EROI<EBW16>*, const EROI<EBW16>*, IMG_REFERENCE_NOISE), ImgSignalNoiseRatio),
      MIREL_OP(float(const EROI<EC24>*, const EROI<EC24>*, IMG_REFERENCE_NOISE), ImgSignalNoiseRatio),
      MIREL_OP(void(const EROI<EBW8>*, const EROI<EBW8>*, EImage<EBW8>*), ImgCorrelogram),
      MIREL_OP(void(const EROI<EBW8>*, const EROI<EBW8>*, EImage<EBW16>*), ImgCorrelogram),
      MIREL_OP(void(const EROI<EBW8>*, const EROI<EBW8>*, float&, float&, float&, int), ImgLinearRegression),
      // mirel/measure/statistics.h
      MIREL_OP(unsigned int(const EROI<EBW8>*), ImgArea),
      MIREL_OP(unsigned int(const EROI<EBW8>*, unsigned int), ImgArea),
      MIREL_OP(short(const EROI<EBW8>*, unsigned char, int&), ImgArea),
      MIREL_OP(void(const EROI<EBW16>*, EBW16, int&), ImgArea),
      MIREL_OP(short(const EROI<EBW8>*, unsigned char, unsigned char, int&), ImgAreaDoubleThreshold),
      MIREL_OP(void(const EROI<EBW16>*, EBW16, EBW16, int&), ImgAreaDoubleThreshold),
      MIREL_OP(short(const EROI<EBW8>*, unsigned char, unsigned char, int&, int&, int&), ImgPixelCount),
      MIREL_OP(void(const EROI<EBW16>*, EBW16, EBW16, int&, int&, int&), ImgPixelCount),
      MIREL_OP(short(const EROI<EBW8>*, unsigned char&, unsigned char&, float&), ImgPixelStat),
      MIREL_OP(void(const EROI<EBW16>*, EBW16&, EBW16&, float&), ImgPixelStat),
      MIREL_OP(short(const EROI<EBW8>*, float&), ImgPixelAverage),
      MIREL_OP(void(const EROI<EBW16>*, float&), ImgPixelAverage),
      MIREL_OP(void(const EROI<EC24>*, float&, float&, float&), ImgPixelAverage),
      MIREL_OP(void(const EROI<EBW8>*, float&, float&), ImgPixelVariance),
      MIREL_OP(void(const EROI<EBW16>*, float&, float&), ImgPixelVariance),
      MIREL_OP(void(const EROI<EC24>*, float&, float&, float&, float&, float&, float&, float&, float&, float&), ImgPixelVariance),
      MIREL_OP(short(const EROI<EBW8>*, float&, float&), ImgPixelStdDev),
      MIREL_OP(void(const EROI<EBW16>*, float&, float&), ImgPixelStdDev),
      MIREL_OP(void(const EROI<EC24>*, float&, float&, float&, float&, float&, float&, float&, float&, float&), ImgPixelStdDev),
      MIREL_OP(short(const EROI<EBW8>*, unsigned char&), ImgPixelMin),
      MIREL_OP(short(const EROI<EBW8>*, unsigned char&), ImgPixelMax),
      MIREL_OP(void(const EROI<EBW16>*, EBW16&), ImgPixelMin),
      MIREL_OP(void(const EROI<EBW16>*, EBW16&), ImgPixelMax),
      MIREL_OP(unsigned int(const EROI<EBW8>*, const EROI<EBW8>*), ImgPixelCompare),
      MIREL_OP(unsigned int(const EROI<EBW16>*, const EROI<EBW16>*), ImgPixelCompare),
      MIREL_OP(unsigned int(const EROI<EC24>*, const EROI<EC24>*), ImgPixelCompare),
      MIREL_OP(unsigned int(const EROI<EBW1>*, const EROI<EBW1>*), ImgPixelCompare),
      MIREL_OP(unsigned int(const EROI<EBW1>*, const EROI<EBW1>*), ImgPixelCompareAligned, .Throws()),
      MIREL_OP(unsigned int(EROI<EBW8>*, int (*)(EBW8&)), ImgCount),
      MIREL_OP(unsigned int(EROI<EBW16>*, int (*)(EBW16&)), ImgCount),
      MIREL_OP(unsigned int(EROI<EC24>*, int (*)(EC24&)), ImgCount),
      MIREL_OP(unsigned int(const EROI<EBW8>*, int (*)(const EBW8&)), ImgCount),
      MIREL_OP(unsigned int(const EROI<EBW16>*, int (*)(const EBW16&)), ImgCount),
      MIREL_OP(unsigned int(const EROI<EC24>*, int (*)(const EC24&)), ImgCount),
      MIREL_OP(float(const EROI<EBW8>*, unsigned int*), ImgAverage),
      MIREL_OP(unsigned int(const EROI<EBW8>*), ImgMinimum),
      MIREL_OP(unsigned int(const EROI<EBW8>*), ImgMaximum),
      MIREL_OP(float(const EROI<EBW8>*, float*, unsigned int*), ImgVariance),
      // mirel/morphology/bilevel.h
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelErodeBox),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelErodeBox),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelDilateBox),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelDilateBox),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelOpenBox),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelOpenBox),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelCloseBox),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelCloseBox),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelWhiteTopHatBox),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelWhiteTopHatBox),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelBlackTopHatBox),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelBlackTopHatBox),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelMorphoGradientBox),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int), ImgBiLevelMorphoGradientBox),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelErodeDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelErodeDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelDilateDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelDilateDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelOpenDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelOpenDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelCloseDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelCloseDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelWhiteTopHatDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelWhiteTopHatDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelBlackTopHatDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelBlackTopHatDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelMorphoGradientDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int), ImgBiLevelMorphoGradientDisk, .Arg(2, 0, 40)),
      MIREL_OP(void(EROI<EBW8>*, EROI<EBW8>*), ImgBiLevelMedian),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgBiLevelMedian),
      // mirel/morphology/bit_morphology.h
      // The vertical passes write whole bytes: the bits behind a row's last
      // pixel in its last byte take the same logic as the pixels.
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgErodeBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgErodeBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgDilateBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgDilateBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgOpenBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgOpenBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgCloseBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgCloseBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgWhiteTopHatBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgWhiteTopHatBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgBlackTopHatBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgBlackTopHatBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgMorphoGradientBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgMorphoGradientBoxAligned, .Arg(2, 0, 40).Arg(3, -1, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgErodeDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgErodeDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgDilateDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgDilateDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgOpenDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgOpenDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgCloseDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgCloseDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgWhiteTopHatDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgWhiteTopHatDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgBlackTopHatDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgBlackTopHatDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgMorphoGradientDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgMorphoGradientDiskAligned, .Arg(2, 0, 40).Throws().Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgErodeBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgErodeBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgDilateBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgDilateBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgOpenBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgOpenBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgCloseBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgCloseBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgWhiteTopHatBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgWhiteTopHatBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgBlackTopHatBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgBlackTopHatBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgMorphoGradientBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int, unsigned int), ImgMorphoGradientBox, .Arg(2, 0, 40).Arg(3, -1, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgErodeDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgErodeDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgDilateDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgDilateDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgOpenDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgOpenDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgCloseDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgCloseDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgWhiteTopHatDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgWhiteTopHatDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgBlackTopHatDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgBlackTopHatDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgMorphoGradientDisk, .Arg(2, 0, 40).Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*, unsigned int), ImgMorphoGradientDisk, .Arg(2, 0, 40).Spill(1)),
      // mirel/morphology/distance.h
      MIREL_OP(short(const EROI<EBW8>*, EImage<EBW16>*, int), ImgDistance, .Arg(2, -2, 400)),
      // mirel/morphology/median.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgMedian),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgMedian),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, int), ImgMedian),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, EC24), ImgMedian),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, EC24), ImgMedian),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*), ImgMedianAligned, .Throws()),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*), ImgMedianAligned, .Throws()),
      MIREL_OP(void(EROI<EBW1>*, EROI<EBW1>*), ImgMedian),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*), ImgMedian),
      // mirel/morphology/morphology.h
      MIREL_FUZZ_MORPHOLOGY(EBW8)
      MIREL_FUZZ_MORPHOLOGY(EBW16)
      MIREL_FUZZ_MORPHOLOGY(EC24)
      MIREL_OP(short(EROI<EBW8>*, EROI<EBW8>*, int, int), ImgErode, .Arg(2, -2, 12)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, int, int), ImgErode, .Arg(2, -2, 12)),
      MIREL_OP(short(EROI<EBW8>*, EROI<EBW8>*, int, int), ImgDilate, .Arg(2, -2, 12)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, int, int), ImgDilate, .Arg(2, -2, 12)),
      MIREL_OP(short(EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgOpen, .Arg(2, -2, 12)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgOpen, .Arg(2, -2, 12)),
      MIREL_OP(short(EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgClose, .Arg(2, -2, 12)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgClose, .Arg(2, -2, 12)),
      MIREL_OP(short(EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgWhiteTopHat, .Arg(2, -2, 12)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgWhiteTopHat, .Arg(2, -2, 12)),
      MIREL_OP(short(EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgBlackTopHat, .Arg(2, -2, 12)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, int, int, int), ImgBlackTopHat, .Arg(2, -2, 12)),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, int, EC24), ImgErode, .Arg(2, -2, 12)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, EC24), ImgErode, .Arg(2, -2, 12)),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, int, EC24), ImgDilate, .Arg(2, -2, 12)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, EC24), ImgDilate, .Arg(2, -2, 12)),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgOpen, .Arg(2, -2, 12)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgOpen, .Arg(2, -2, 12)),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgClose, .Arg(2, -2, 12)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgClose, .Arg(2, -2, 12)),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgWhiteTopHat, .Arg(2, -2, 12)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgWhiteTopHat, .Arg(2, -2, 12)),
      MIREL_OP(void(EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgBlackTopHat, .Arg(2, -2, 12)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, EC24, EC24), ImgBlackTopHat, .Arg(2, -2, 12)),
      // mirel/morphology/thinning.h
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, const EKernel*, KERNEL_ROTATION, int&), ImgThin, .Arg(4, -2, 40)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, const EKernel*, KERNEL_ROTATION, int&), ImgThick, .Arg(4, -2, 40)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, const EKernel*, KERNEL_ROTATION, int&), ImgBiLevelThin, .Arg(4, -2, 40)),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, const EKernel*, KERNEL_ROTATION, int&), ImgBiLevelThick, .Arg(4, -2, 40)),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, const EKernel*, KERNEL_ROTATION, int&), ImgThin, .Arg(4, -2, 40)),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, const EKernel*, KERNEL_ROTATION, int&), ImgThick, .Arg(4, -2, 40)),
      MIREL_OP(short(EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThinAligned, .Arg(4, -2, 40).Throws()),
      MIREL_OP(short(const EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThinAligned, .Arg(4, -2, 40).Throws()),
      MIREL_OP(short(EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThickAligned, .Arg(4, -2, 40).Throws()),
      MIREL_OP(short(const EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThickAligned, .Arg(4, -2, 40).Throws()),
      MIREL_OP(short(EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThin, .Arg(4, -2, 40)),
      MIREL_OP(short(const EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThin, .Arg(4, -2, 40)),
      MIREL_OP(short(EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThick, .Arg(4, -2, 40)),
      MIREL_OP(short(const EROI<EBW1>*, EROI<EBW1>*, const EKernel*, KERNEL_ROTATION, int&), ImgThick, .Arg(4, -2, 40)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, const EKernel*, KERNEL_ROTATION, int&), ImgThin, .Arg(4, -2, 40)),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, const EKernel*, KERNEL_ROTATION, int&), ImgThick, .Arg(4, -2, 40)),
      // mirel/point/arith.h
      MIREL_OP(void(EBW8, EROI<EBW8>*), ImgCopy),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*), ImgCopy),
      MIREL_OP(void(EBW16, EROI<EBW16>*), ImgCopy),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*), ImgCopy),
      MIREL_OP(void(EBW32, EROI<EBW32>*), ImgCopy),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW32>*), ImgCopy),
      MIREL_OP(void(EC15, EROI<EC15>*), ImgCopy),
      MIREL_OP(void(const EROI<EC15>*, EROI<EC15>*), ImgCopy),
      MIREL_OP(void(EC16, EROI<EC16>*), ImgCopy),
      MIREL_OP(void(const EROI<EC16>*, EROI<EC16>*), ImgCopy),
      MIREL_OP(void(EC24, EROI<EC24>*), ImgCopy),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*), ImgCopy),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EBW8, EROI<EBW8>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, EROI<EBW8>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EBW8, const EROI<EBW8>*, EROI<EBW8>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, EBW8, EROI<EBW8>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, const EROI<EBW8>*, EROI<EBW8>*), ImgOper, .Arg(0, -3, 33)),
      // The overlay reads and writes rows of BW8 images as byte triples, up to
      // two bytes behind a row whose width is no multiple of 3.
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, const EROI<EBW8>*, EROI<EBW8>*), ImgOper, .Arg(0, 34, 34).Spill(2).Tag("overlay")),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EC24, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EC24>*, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, const EROI<EBW8>*, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EC24, const EROI<EC24>*, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EC24>*, EC24, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EC24>*, const EROI<EC24>*, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, const EROI<EC24>*, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EC24>*, const EROI<EBW8>*, EROI<EC24>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW8>*, const EROI<EBW8>*, EROI<EBW16>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW16>*, const EROI<EBW8>*, EROI<EBW16>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EBW16, EROI<EBW16>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW16>*, EROI<EBW16>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EBW16, const EROI<EBW16>*, EROI<EBW16>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW16>*, EBW16, EROI<EBW16>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW16>*, const EROI<EBW16>*, EROI<EBW16>*), ImgOper),
      // mirel/point/bits.h
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*), ImgBW1Alignment, .Throws()),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*), ImgBW1UnAlignment, .Throws()),
      MIREL_OP(void(EBW1, EROI<EBW1>*), ImgCopyAligned, .Throws()),
      MIREL_OP(void(EBW1, EROI<EBW1>*), ImgCopy),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*), ImgCopyAligned, .Throws()),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW1>*), ImgCopy),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EBW1, EROI<EBW1>*), ImgOperAligned, .Throws()),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, EBW1, EROI<EBW1>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW1>*, EROI<EBW1>*), ImgOperAligned, .Throws()),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW1>*, EROI<EBW1>*), ImgOper),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW1>*, const EROI<EBW1>*, EROI<EBW1>*), ImgOperAligned, .Throws()),
      MIREL_OP(void(ARITH_LOGIC_OPERATIONS, const EROI<EBW1>*, const EROI<EBW1>*, EROI<EBW1>*), ImgOper),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW1>*), ImgConvertAligned, .Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW1>*), ImgConvert, .Spill(1)),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW1>*), ImgConvertAligned, .Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW1>*), ImgConvert, .Spill(1)),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW1>*), ImgConvertAligned, .Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW1>*), ImgConvert, .Spill(1)),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW8>*, unsigned char), ImgConvertAligned, .Throws()),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW8>*, unsigned char), ImgConvert),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW16>*, unsigned short int), ImgConvertAligned, .Throws()),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW16>*, unsigned short int), ImgConvert),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW32>*, unsigned int), ImgConvertAligned, .Throws()),
      MIREL_OP(void(const EROI<EBW1>*, EROI<EBW32>*, unsigned int), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW1>*, unsigned int, float), ImgThresholdAligned, .Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW1>*, unsigned int, float), ImgThreshold, .Spill(1)),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW1>*, unsigned int, float), ImgThresholdAligned, .Throws().Spill(1)),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW1>*, unsigned int, float), ImgThreshold, .Spill(1)),
      // mirel/point/color_convert.h
      MIREL_OP(void(const EROI<EC15>*, EROI<EC24>*), ImgConvert),
      MIREL_OP(void(const EROI<EC16>*, EROI<EC24>*), ImgConvert),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC15>*), ImgConvert),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC16>*), ImgConvert),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24A>*), ImgConvert),
      MIREL_OP(void(const EROI<EC24A>*, EROI<EC24>*), ImgConvert),
      MIREL_OP(void(const EROI<EC24>*, const EROI<EBW8>*, EROI<EC24A>*), ImgConvert),
      MIREL_OP(void(const EROI<EC24A>*, EROI<EC24>*, EROI<EBW8>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EC15>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EC16>*), ImgConvert),
      MIREL_OP(void(const EROI<EC15>*, EROI<EBW8>*), ImgConvert),
      MIREL_OP(void(const EROI<EC16>*, EROI<EBW8>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EC24>*), ImgConvert),
      MIREL_OP(void(const EROI<EC24>*, EROI<EBW8>*), ImgConvert),
      MIREL_OP(void(const EROI<EFLOAT32>*, EROI<EBW8>*), ImgConvert),
      MIREL_OP(void(const EROI<EFLOAT32>*, EROI<EBW16>*), ImgConvert),
      MIREL_OP(void(const EROI<EFLOAT32>*, EROI<EBW32>*), ImgConvert),
      MIREL_OP(void(const EROI<EFLOAT64>*, EROI<EBW8>*), ImgConvert),
      MIREL_OP(void(const EROI<EFLOAT64>*, EROI<EBW16>*), ImgConvert),
      MIREL_OP(void(const EROI<EFLOAT64>*, EROI<EBW32>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EFLOAT32>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EFLOAT32>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EFLOAT32>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EFLOAT64>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EFLOAT64>*), ImgConvert),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EFLOAT64>*), ImgConvert),
      // mirel/point/convert.h
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW8>*, unsigned int), ImgConvert),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW8>*, unsigned int), ImgConvert),
      MIREL_OP(void(const EROI<EBW32>*, EROI<EBW16>*, unsigned int), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW16>*, unsigned int), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW32>*, unsigned int), ImgConvert),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW32>*, unsigned int), ImgConvert),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW16>*), ImgConvertTo422),
      // mirel/point/lut.h
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, const EBW8*), ImgLut, .Untraced()),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, const EBW8Vector*), ImgLut),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, const EBW16*), ImgLut),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, const EBW16Vector*), ImgLut),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW8>*, const EBW8Vector*, unsigned int), ImgLut),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, float, float), ImgGainOffset),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, EColor, EColor), ImgGainOffset),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, float, float), ImgGainOffset),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, EBW8 (*)(EBW8), int), ImgTransform),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, EBW16 (*)(EBW16)), ImgTransform),
      // mirel/point/normalize.h
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, float, float), ImgNormalize),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, float, float), ImgNormalize),
      // mirel/point/overlay.h
      MIREL_OP(void(const EROI<EC24>*, EROI<EC24>*, int, int, EC24), ImgOverlay),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC16>*, int, int, EC24), ImgOverlay),
      MIREL_OP(void(const EROI<EC24>*, EROI<EC15>*, int, int, EC24), ImgOverlay),
      MIREL_OP(void(const EROI<EBW8>*, const EROI<EC24>*, EROI<EC24>*, int, int, EC24), ImgOverlay),
      MIREL_OP(void(EC24), ImgSetOverlayColor),
      MIREL_OP(EC24(), ImgGetOverlayColor),
      // mirel/point/threshold.h
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned char, unsigned char, float), ImgThreshold),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, unsigned int, EBW16, EBW16, float), ImgThreshold),
      MIREL_OP(short(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, unsigned int, unsigned char, unsigned char, unsigned char), ImgDoubleThreshold),
      MIREL_OP(void(const EROI<EBW16>*, EROI<EBW16>*, unsigned int, unsigned int, EBW16, EBW16, EBW16), ImgDoubleThreshold),
      MIREL_OP(void(const EROI<EC24>*, EROI<EBW8>*, EC24, EC24), ImgThreshold),
      MIREL_OP(void(const EROI<EC24>*, EROI<EBW8>*, EC24, EC24, const EColorLookup*, EBW8, EBW8), ImgThreshold),
      // mirel/point/uniformize.h
      MIREL_OP(void(const EROI<EBW8>*, EBW8, const EROI<EBW8>*, EROI<EBW8>*, int), ImgUniformize),
      MIREL_OP(void(const EROI<EBW8>*, EBW8, const EROI<EBW8>*, EBW8, const EROI<EBW8>*, EROI<EBW8>*), ImgUniformize),
      MIREL_OP(void(const EROI<EBW8>*, EBW8, const EBW8Vector*, EROI<EBW8>*, int), ImgUniformize),
      MIREL_OP(void(const EROI<EBW8>*, EBW8, const EBW8Vector*, EBW8, const EBW8Vector*, EROI<EBW8>*), ImgUniformize),
      MIREL_OP(void(const EROI<EBW16>*, EBW16, const EROI<EBW16>*, EROI<EBW16>*, int), ImgUniformize),
      MIREL_OP(void(const EROI<EBW16>*, EBW16, const EROI<EBW16>*, EBW16, const EROI<EBW16>*, EROI<EBW16>*), ImgUniformize),
      MIREL_OP(void(const EROI<EBW16>*, EBW16, const EBW16Vector*, EROI<EBW16>*, int), ImgUniformize),
      MIREL_OP(void(const EROI<EBW16>*, EBW16, const EBW16Vector*, EBW16, const EBW16Vector*, EROI<EBW16>*), ImgUniformize),
      MIREL_OP(void(const EROI<EC24>*, EC24, const EROI<EC24>*, EROI<EC24>*, int), ImgUniformize),
      MIREL_OP(void(const EROI<EC24>*, EC24, const EROI<EC24>*, EC24, const EROI<EC24>*, EROI<EC24>*), ImgUniformize),
      MIREL_OP(void(const EROI<EC24>*, EC24, const EC24Vector*, EROI<EC24>*, int), ImgUniformize),
      MIREL_OP(void(const EROI<EC24>*, EC24, const EC24Vector*, EC24, const EC24Vector*, EROI<EC24>*), ImgUniformize),
      // mirel/vector/contour.h
      MIREL_OP(short(const EROI<EBW8>*, CONTOUR_MODE, int, int, CONTOUR_THRESHOLD, unsigned int, CONNEXITY, EVector*), ImgContour),
      MIREL_OP(void(const EROI<EBW8>*, CONTOUR_MODE, int, int, CONTOUR_THRESHOLD, unsigned int, CONNEXITY, EPathVector*), ImgContour),
      MIREL_OP(void(const EROI<EBW8>*, CONTOUR_MODE, int, int, CONTOUR_THRESHOLD, unsigned int, CONNEXITY, EBW8PathVector*, int), ImgContour),
      MIREL_OP(void(const EROI<EBW16>*, CONTOUR_MODE, int, int, CONTOUR_THRESHOLD, unsigned int, CONNEXITY, EPathVector*), ImgContour),
      MIREL_OP(void(const EROI<EBW16>*, CONTOUR_MODE, int, int, CONTOUR_THRESHOLD, unsigned int, CONNEXITY, EBW16PathVector*, int), ImgContour),
      // mirel/vector/path.h
      MIREL_OP(void(const EROI<EBW8>*, EBW8PathVector*), ImgImageToPath),
      MIREL_OP(void(const EROI<EC24>*, EC24PathVector*), ImgImageToPath),
      MIREL_OP(void(const EROI<EBW16>*, EBW16PathVector*), ImgImageToPath),
      MIREL_OP(void(EROI<EBW8>*, const EBW8PathVector*), ImgPathToImage),
      MIREL_OP(void(EROI<EC24>*, const EC24PathVector*), ImgPathToImage),
      MIREL_OP(void(EROI<EBW16>*, const EBW16PathVector*), ImgPathToImage),
      MIREL_OP(void(const EROI<EBW8>*, EBW8Vector*, int, int, int, int), ImgImageToLineSegment),
      MIREL_OP(void(const EROI<EBW16>*, EBW16Vector*, int, int, int, int), ImgImageToLineSegment),
      MIREL_OP(void(const EROI<EC24>*, EC24Vector*, int, int, int, int), ImgImageToLineSegment),
      MIREL_OP(void(EROI<EBW8>*, const EBW8Vector*, int, int, int, int), ImgLineSegmentToImage),
      MIREL_OP(void(EROI<EBW16>*, const EBW16Vector*, int, int, int, int), ImgLineSegmentToImage),
      MIREL_OP(void(EROI<EC24>*, const EC24Vector*, int, int, int, int), ImgLineSegmentToImage),
      MIREL_OP(void(EROI<EBW8>*, EBW8, int, int, int, int), ImgLineSegmentToImage),
      MIREL_OP(void(EROI<EBW16>*, EBW16, int, int, int, int), ImgLineSegmentToImage),
      MIREL_OP(void(EROI<EC24>*, EC24, int, int, int, int), ImgLineSegmentToImage),
      // mirel/vector/profile.h
      MIREL_OP(void(const EBW8Vector*, EPeaksVector*, unsigned int, unsigned int, unsigned int, unsigned int), ImgGetProfilePeaks),
      MIREL_OP(void(const EBW16Vector*, EPeaksVector*, unsigned int, unsigned int, unsigned int, unsigned int), ImgGetProfilePeaks),
      MIREL_OP(void(const EBW8Vector*, EBW8Vector*), ImgProfileDerivative),
      MIREL_OP(void(const EBW16Vector*, EBW16Vector*), ImgProfileDerivative),
      MIREL_OP(void(const EBW8Vector*, EBW8Vector*, unsigned int), ImgConvolUniform),
      MIREL_OP(void(const EBW16Vector*, EBW16Vector*, unsigned int), ImgConvolUniform),
      MIREL_OP(void(const EBW8Vector*, EBW8Vector*, unsigned int), ImgConvolGaussian, .Arg(2, 0, 60)),
      MIREL_OP(void(const EBW16Vector*, EBW16Vector*, unsigned int), ImgConvolGaussian, .Arg(2, 0, 60)),
      MIREL_OP(void(const EBW8Vector*, EBW8Vector*, unsigned int), ImgDilate, .Arg(2, 0, 60)),
      MIREL_OP(void(const EBW16Vector*, EBW16Vector*, unsigned int), ImgDilate, .Arg(2, 0, 60)),
      MIREL_OP(void(const EBW8Vector*, EBW8Vector*, unsigned int), ImgErode, .Arg(2, 0, 60)),
      MIREL_OP(void(const EBW16Vector*, EBW16Vector*, unsigned int), ImgErode, .Arg(2, 0, 60)),
      // mirel/vector/untyped_ops.h
      MIREL_OP(short(const EVector*, EVector*, int, int), ImgGetVectExtremes),
      MIREL_OP(short(const EVector*, EVector*, unsigned int, unsigned int), ImgGetVectExtremes),
      MIREL_OP(short(const EVector*, EVector*, int), ImgGetVectTransition),
      MIREL_OP(short(const EVector*, EVector*, unsigned int), ImgGetVectTransition),
      MIREL_OP(short(ARITH_LOGIC_OPERATIONS, const EVector*, int, EVector*, int, int), ImgVect1c2),
      MIREL_OP(short(ARITH_LOGIC_OPERATIONS, const EVector*, double, EVector*), ImgVect1c2),
      MIREL_OP(short(EVector*, int, int, int), ImgVectDataShift),
      MIREL_OP(short(const EVector*, EVector*, const EKernel*, int, int), ImgConvolVect),
      MIREL_OP(short(const EROI<EBW8>*, EVector*, int, int, int, int), ImgLineSegToVect),
      MIREL_OP(short(const EVector*, EROI<EBW8>*), ImgVectToLineSeg),
      MIREL_OP(short(const EVector*, int, int, int, int, EROI<EBW8>*), ImgVectToLineSeg),
      MIREL_OP(short(TRANS_SCAN_EDGE, const EROI<EBW8>*, int, int, int, int, int, int, EVector*), ImgTransitionScan, .Arg(7, -2, 2000)),

      // Members of classes.
      MIREL_OP(void(const EROI<EBW8>*, unsigned int, E_IMAGE_TYPES, IMG_PYRAMIDAL_REDUCTION_MODE, int,
                    unsigned int), PyramidFromSource, .Arg(1, 0, 10).Sequence()),
      MIREL_OP(void(unsigned int, E_IMAGE_TYPES, IMG_PYRAMIDAL_REDUCTION_MODE, int, int, int, unsigned char),
               PyramidFromLevel, .Arg(0, 0, 10).Arg(4, -2, 300).Arg(5, -2, 300).Sequence()),
      MIREL_OP(void(const EROI<EBW8>*, EROI<EBW8>*, unsigned int, int, int, int, unsigned int), MovingAverage,
               .Arg(2, 0, 300).Arg(3, -2, 300).Arg(4, -2, 300).Arg(6, 0, 6).Sequence()),
      MIREL_OP(void(EKernel*, int, int, float, unsigned int, short, short, KERNEL_TYPE), KernelMembers,
               .Arg(4, 0, 400).Sequence()),
      MIREL_OP(void(EBWHistogramVector*, unsigned int, unsigned int), HistogramEntropy, .Sequence()),
      // A plot draws one line a pixel column: its size is bounded here.
      MIREL_OP(void(const EBWHistogramVector*, EROI<EC24>*, float, float, float, float), HistogramDraw,
               .Arg(2, -3000, 3000).Arg(3, -3000, 3000).Arg(4, -3000, 3000).Arg(5, -3000, 3000).Sequence()),
      MIREL_OP(void(const EPathVector*, EROI<EC24>*, float, float, float, float), VectorDraw, .Sequence()),
      MIREL_OP(void(const EBW8PathVector*, EROI<EC24>*, float, float, float, float), VectorDraw, .Sequence()),
      MIREL_OP(void(const EBW16PathVector*, EROI<EC24>*, float, float, float, float), VectorDraw, .Sequence()),
      MIREL_OP(void(const EC24PathVector*, EROI<EC24>*, float, float, float, float), VectorDraw, .Sequence()),
      MIREL_OP(void(EROI<EC24>*, int, int, int, int, int, double, double, const EROI<EBW8>*, float), RasterDraw,
               .Sequence()),
      MIREL_OP(void(int, int, int, int, int, int, int, double, double, const EROI<EC24>*, float), SvgDraw, .Sequence()),
      MIREL_OP(void(EColorLookup*, unsigned int, unsigned char, unsigned char), ColorLookupMembers, .Sequence()),
      MIREL_OP(void(EVector*, int, int, int, int, int, int), UntypedMembers,
               .Arg(2, -2, 70000).Arg(3, -2, 16).Arg(6, -2, 1 << 20).Sequence()),
      MIREL_OP(void(EBW8Vector*, int, unsigned int, int), TypedMembers, .Arg(2, 0, 100000).Sequence()),
      MIREL_OP(void(EPathVector*, int, unsigned int, int), TypedMembers, .Arg(2, 0, 100000).Sequence()),
      MIREL_OP(void(EBWHistogramVector*, int, unsigned int, int), TypedMembers, .Arg(2, 0, 100000).Sequence()),
      MIREL_OP(void(const EImage<EBW8>*), ImageCopyMove, .Sequence()),
      MIREL_OP(void(const EImage<EBW1>*), ImageCopyMove, .Sequence()),
      MIREL_OP(void(const EImage<EC24>*), ImageCopyMove, .Sequence()),
      MIREL_OP(void(EROI<EBW8>*, int, int, int, int), RoiPlacement, .Sequence()),
  };
  return table;
}

}  // namespace fuzzops
