// Image files through Mirel::IO, when the build has it: load and save.
#include "bind.h"

#ifdef MIREL_PYTHON_IO
#include "mirel/io/image_file.h"
#endif

namespace mirelpy {

#ifdef MIREL_PYTHON_IO
namespace {

template <class T>
py::array Load(const std::string& path) {
  EImage<T> image;
  Run([&] { ImgLoad(path.c_str(), &image); });
  py::array a = NewArray<T>(image.GetWidth(), image.GetHeight());
  const std::size_t row = static_cast<std::size_t>(image.GetWidth()) * sizeof(T);
  for (int y = 0; y < image.GetHeight(); ++y)
    std::memcpy(static_cast<unsigned char*>(a.mutable_data()) + y * a.strides(0), image.GetImagePtr(0, y), row);
  return a;
}

}  // namespace
#endif

void BindFiles(Registry& r) {
  py::module_& m = r.module();
#ifdef MIREL_PYTHON_IO
  m.attr("has_files") = true;
  m.def(
      "load",
      [](const std::string& path) -> py::array {
        E_IMAGE_TYPES type = E_IMAGE_TYPE_BW8;
        Run([&] { ImgImageFileInfo(path.c_str(), nullptr, nullptr, &type); });
        if (type == E_IMAGE_TYPE_BW16) return Load<EBW16>(path);
        if (type == E_IMAGE_TYPE_C24) return Load<EC24>(path);
        return Load<EBW8>(path);
      },
      "Reads a PGM, PPM, PNG, JPEG or TIFF file: uint8 or uint16 grey, or HxWx3 uint8 colour with channel 0 "
      "blue and channel 2 red.",
      py::arg("path"));
  m.def(
      "save",
      [](const py::handle& image, const std::string& path, int quality) {
        const py::array a = AsArray(image, "save");
        Dispatch<OneOf<EBW8, EBW16, EC24>>("save", a, [&](auto tag) -> py::object {
          using T = typename std::decay_t<decltype(tag)>::type;
          Source<T> s(a);
          Run([&] { ImgSave(s.roi(), path.c_str(), E_IMAGE_FILE_AUTO, quality); });
          return py::none();
        });
      },
      "Writes an image file, the format chosen by the extension (channel 0 of colour is blue).", py::arg("image"),
      py::arg("path"), py::arg("quality") = 95);
#else
  m.attr("has_files") = false;
  (void)r;
#endif
}

}  // namespace mirelpy
