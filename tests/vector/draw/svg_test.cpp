// The SVG adapter's documents, read back with an XML parser.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "test_support.h"
#if defined(MIREL_TEST_TINYXML2)
#include <tinyxml2.h>
#endif

namespace {

using Corvane::DrawColor;

#if defined(MIREL_TEST_TINYXML2)

std::vector<unsigned char> FromBase64(const std::string& text) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<unsigned char> out;
  unsigned value = 0;
  int bits = 0;
  for (char c : text) {
    const size_t d = digits.find(c);
    if (d == std::string::npos) break;
    value = (value << 6) | static_cast<unsigned>(d);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      out.push_back(static_cast<unsigned char>(value >> bits));
    }
  }
  return out;
}

std::vector<const tinyxml2::XMLElement*> Elements(const tinyxml2::XMLDocument& doc) {
  std::vector<const tinyxml2::XMLElement*> out;
  for (const auto* e = doc.RootElement()->FirstChildElement(); e != nullptr; e = e->NextSiblingElement())
    out.push_back(e);
  return out;
}

std::string A(const tinyxml2::XMLElement* e, const char* name) {
  const char* v = e->Attribute(name);
  return v == nullptr ? "(none)" : v;
}

#endif

TEST(SvgDocument, EachOperationReadsBackAsItsElement) {
#if !defined(MIREL_TEST_TINYXML2)
  GTEST_SKIP() << "TinyXML-2 is not installed";
#else
  Corvane::SvgDrawAdapter svg(120, 80);
  svg.SetPenColor(DrawColor(1, 2, 3));
  svg.SetBrushColor(DrawColor(4, 5, 6));
  svg.SetTextColor(DrawColor(7, 8, 9));
  svg.SetBackgroundColor(DrawColor(10, 11, 12));
  const DrawColor red(255, 0, 16);
  svg.DrawPixel(3, 4, red, 0.5);
  svg.DrawLine(1, 2, 30, 40, Corvane::CurrentColor);
  svg.DrawArc(10, 10, 20, 10, 0.0, 1.5707963267948966, red);
  svg.DrawRectangle(5, 6, -4, 3, red);
  svg.DrawPolygon(Corvane::DrawPointArray{{1.9, 2.2}, {10, 2}, {5, -8.7}}, red);
  svg.DrawEllipse(0, 0, 9, 4, red);
  svg.FillRectangle(0, 0, 2, 2, Corvane::CurrentColor, Corvane::CurrentColor);
  svg.FillEllipse(0, 0, 2, 2, red, DrawColor(0, 255, 0));
  svg.FillPolygon(Corvane::DrawPointArray{{0, 0}, {4, 0}, {0, 4}}, red, Corvane::CurrentColor);
  svg.DrawText("a<b & \"c\"\n\xE9t\xE9", 10, 20, Corvane::CurrentColor);
  svg.DrawTextBox("box", 0, 0, DrawColor(255, 255, 255), Corvane::CurrentColor);
  EImage<EBW8> image(2, 1);
  image.SetPixel(EBW8(200), 0, 0);
  image.SetPixel(EBW8(100), 1, 0);
  svg.DrawImage(&image, 7, 8, 3.0f, 0.0f, 0.5, DrawColor(255, 0, 255));
  svg.DrawArc(0, 0, 5, 5, 1.0, 0.0, red);  // nothing

  tinyxml2::XMLDocument doc;
  ASSERT_EQ(doc.Parse(svg.GetDocument().c_str()), tinyxml2::XML_SUCCESS) << doc.ErrorStr();
  const tinyxml2::XMLElement* root = doc.RootElement();
  EXPECT_STREQ(root->Name(), "svg");
  EXPECT_EQ(A(root, "width"), "120");
  EXPECT_EQ(A(root, "viewBox"), "0 0 120 80");
  const auto e = Elements(doc);
  std::vector<std::string> names;
  for (const auto* x : e) names.push_back(x->Name());
  EXPECT_EQ(names, (std::vector<std::string>{"rect", "line", "path", "rect", "polygon", "ellipse", "rect", "ellipse",
                                             "polygon", "text", "text", "rect", "text", "image"}));
  ASSERT_EQ(e.size(), 14u);
  EXPECT_EQ(A(e[0], "x") + A(e[0], "y") + A(e[0], "fill") + A(e[0], "fill-opacity"), "34#ff00100.5");
  // Lines and frames run through pixel centres; CurrentColor is the pen.
  EXPECT_EQ(A(e[1], "x1") + " " + A(e[1], "y1") + " " + A(e[1], "x2") + " " + A(e[1], "y2"), "1.5 2.5 30.5 40.5");
  EXPECT_EQ(A(e[1], "stroke"), "#010203");
  EXPECT_EQ(A(e[2], "d").substr(0, 25), "M 30.5 15.5 A 10 5 0 0 1 ");
  EXPECT_EQ(A(e[2], "fill"), "none");
  EXPECT_EQ(A(e[3], "x") + " " + A(e[3], "y") + " " + A(e[3], "width") + " " + A(e[3], "height"), "1.5 6.5 4 3");
  EXPECT_EQ(A(e[4], "points"), "1.5,2.5 10.5,2.5 5.5,-7.5");
  EXPECT_EQ(A(e[5], "cx") + " " + A(e[5], "cy") + " " + A(e[5], "rx") + " " + A(e[5], "ry"), "5 2.5 4.5 2");
  EXPECT_EQ(A(e[6], "fill") + A(e[6], "stroke"), "#040506#010203");
  EXPECT_EQ(A(e[7], "fill"), "#00ff00");
  EXPECT_EQ(A(e[8], "fill") + A(e[8], "fill-rule"), "#040506evenodd");
  // Markup survives; bytes outside ASCII show as '?'.
  EXPECT_STREQ(e[9]->GetText(), "a<b & \"c\"");
  EXPECT_STREQ(e[10]->GetText(), "?t?");
  EXPECT_EQ(A(e[9], "fill"), "#070809");
  EXPECT_EQ(A(e[11], "fill") + A(e[11], "width") + A(e[11], "height"), "#0a0b0c2212");
  EXPECT_STREQ(e[12]->GetText(), "box");
  // The image: 6 by 3 units of a 2 by 1 BMP, tinted since the opacity is
  // not 1: red 200 * 255 * 0.003921569 = 200, green 0, blue 200.
  EXPECT_EQ(A(e[13], "width") + " " + A(e[13], "height") + " " + A(e[13], "opacity"), "6 3 0.5");
  const std::string href = A(e[13], "xlink:href");
  const std::string prefix = "data:image/bmp;base64,";
  ASSERT_EQ(href.substr(0, prefix.size()), prefix);
  const std::vector<unsigned char> bmp = FromBase64(href.substr(prefix.size()));
  ASSERT_EQ(bmp.size(), 54u + 8u);
  EXPECT_EQ(bmp[0], 'B');
  EXPECT_EQ(bmp[18] | bmp[22] << 8, 2 | 1 << 8);  // width 2, height 1
  EXPECT_EQ(std::vector<int>(bmp.begin() + 54, bmp.end()), (std::vector<int>{200, 0, 200, 100, 0, 100, 0, 0}));
#endif
}

TEST(SvgDocument, SaveWritesTheDocumentAndReportsAFileThatCannotBeOpened) {
  Corvane::SvgDrawAdapter svg(-5, 30);
  EXPECT_EQ(svg.GetWidth(), 0);
  EBWHistogramVector histogram(4);
  histogram.SetNumElements(4);
  for (unsigned int i = 0; i < 4; ++i) histogram[i] = i * i;
  histogram.Draw(&svg, 0, 0, 200, 100);
  const std::string path =
      (std::filesystem::temp_directory_path() / ("mirel_svg_" + std::to_string(::getpid()) + ".svg")).string();
  svg.Save(path.c_str());
  EXPECT_EQ(EGetError(), E_OK);
#if defined(MIREL_TEST_TINYXML2)
  tinyxml2::XMLDocument doc;
  EXPECT_EQ(doc.LoadFile(path.c_str()), tinyxml2::XML_SUCCESS);
  // The frame, six captions and limits, and a line for each column of the bins.
  const EPlot& plot = histogram.GetPlot();
  EXPECT_EQ(Elements(doc).size(), 7u + static_cast<size_t>(plot.XView(4) - plot.GetLeft()));
#endif
  std::remove(path.c_str());
  svg.Save("/nonexistent-dir/x.svg");
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  EXPECT_STREQ(EGetErrorTrace(), "SvgDrawAdapter::Save");
  svg.Save(nullptr);
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
}

}  // namespace
