#include "mirel/vector/draw/svg_draw_adapter.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

#include "mirel/foundation/frame_internal.h"
#include "mirel/vector/draw/draw_internal.h"

namespace Corvane {

namespace {

// Shortest text that reads back as the same double, whatever the locale.
std::string Num(double v) {
  if (!std::isfinite(v)) v = 0.0;
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}
// A pixel coordinate's centre.
std::string Centre(long long v) { return Num(static_cast<double>(v) + 0.5); }

std::string Attr(const char* name, const std::string& value) {
  return std::string(" ") + name + "=\"" + value + "\"";
}

// Text content: markup characters escaped, anything but printable ASCII
// as '?', as the raster font shows it.
std::string Escape(const char* text, std::size_t length) {
  std::string out;
  for (std::size_t i = 0; i < length; ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '"': out += "&quot;"; break;
      case '\'': out += "&apos;"; break;
      default: out += (c < 32 || c > 126) ? '?' : static_cast<char>(c); break;
    }
  }
  return out;
}

void Base64(const std::vector<unsigned char>& bytes, std::string& out) {
  static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::size_t i = 0;
  for (; i + 2 < bytes.size(); i += 3) {
    const unsigned v = (bytes[i] << 16) | (bytes[i + 1] << 8) | bytes[i + 2];
    out += kDigits[v >> 18], out += kDigits[(v >> 12) & 63], out += kDigits[(v >> 6) & 63], out += kDigits[v & 63];
  }
  if (i + 1 == bytes.size()) {
    const unsigned v = bytes[i] << 16;
    out += kDigits[v >> 18], out += kDigits[(v >> 12) & 63], out += "==";
  } else if (i + 2 == bytes.size()) {
    const unsigned v = (bytes[i] << 16) | (bytes[i + 1] << 8);
    out += kDigits[v >> 18], out += kDigits[(v >> 12) & 63], out += kDigits[(v >> 6) & 63], out += '=';
  }
}

void Le(std::vector<unsigned char>& b, unsigned v, int bytes) {
  for (int i = 0; i < bytes; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}

}  // namespace

SvgDrawAdapter::SvgDrawAdapter(int width, int height) : width_(width < 0 ? 0 : width), height_(height < 0 ? 0 : height) {}

SvgDrawAdapter::~SvgDrawAdapter() = default;

std::string SvgDrawAdapter::Hex(const DrawColor& color) const {
  const mirel::draw::Rgb rgb = mirel::draw::BytesOf(color);
  char out[8];
  std::snprintf(out, sizeof out, "#%02x%02x%02x", rgb.c[0], rgb.c[1], rgb.c[2]);
  return out;
}

std::string SvgDrawAdapter::GetDocument() const {
  const std::string w = std::to_string(width_), h = std::to_string(height_);
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\"" +
         Attr("width", w) + Attr("height", h) + Attr("viewBox", "0 0 " + w + " " + h) + ">\n" + body_ + "</svg>\n";
}

void SvgDrawAdapter::Save(const char* path) const {
  mirel::Frame frame("SvgDrawAdapter::Save");
  std::FILE* file = path != nullptr ? std::fopen(path, "wb") : nullptr;
  if (!frame.Require(file != nullptr, E_ERROR_FILE_OPEN)) return;
  const std::string document = GetDocument();
  const bool written = std::fwrite(document.data(), 1, document.size(), file) == document.size();
  const bool closed = std::fclose(file) == 0;
  if (!written) frame.Fail(E_ERROR_FILE_WRITE);
  else if (!closed) frame.Fail(E_ERROR_FILE_CLOSE);
}

void SvgDrawAdapter::DrawPixel(int x, int y, const DrawColor& color, double opacity) {
  const double a = mirel::draw::ClampOpacity(opacity);
  body_ += "<rect" + Attr("x", std::to_string(x)) + Attr("y", std::to_string(y)) + Attr("width", "1") +
           Attr("height", "1") + Attr("fill", Hex(Pen(color)));
  if (a < 1.0) body_ += Attr("fill-opacity", Num(a));
  body_ += "/>\n";
}

void SvgDrawAdapter::DrawLine(int x0, int y0, int x1, int y1, const DrawColor& color) {
  body_ += "<line" + Attr("x1", Centre(x0)) + Attr("y1", Centre(y0)) + Attr("x2", Centre(x1)) +
           Attr("y2", Centre(y1)) + Attr("stroke", Hex(Pen(color))) + Attr("stroke-width", "1") +
           Attr("stroke-linecap", "square") + "/>\n";
}

void SvgDrawAdapter::DrawArc(int x, int y, int width, int height, double startAngle, double sweepAngle,
                             const DrawColor& color) {
  if (!(sweepAngle != 0.0) || !std::isfinite(startAngle)) return;
  if (std::fabs(sweepAngle) >= 6.283185307179586) {
    DrawEllipse(x, y, width, height, color);
    return;
  }
  const mirel::draw::Box b = mirel::draw::BoxOf(x, y, width, height);
  const double cx = 0.5 * static_cast<double>(b.left + b.right) + 0.5;
  const double cy = 0.5 * static_cast<double>(b.top + b.bottom) + 0.5;
  const double rx = 0.5 * static_cast<double>(b.right - b.left), ry = 0.5 * static_cast<double>(b.bottom - b.top);
  const double end = startAngle + sweepAngle;
  body_ += "<path" +
           Attr("d", "M " + Num(cx + rx * std::cos(startAngle)) + " " + Num(cy + ry * std::sin(startAngle)) + " A " +
                         Num(rx) + " " + Num(ry) + " 0 " + (std::fabs(sweepAngle) > 3.141592653589793 ? "1" : "0") +
                         " " + (sweepAngle > 0 ? "1" : "0") + " " + Num(cx + rx * std::cos(end)) + " " +
                         Num(cy + ry * std::sin(end))) +
           Attr("fill", "none") + Attr("stroke", Hex(Pen(color))) + Attr("stroke-width", "1") + "/>\n";
}

void SvgDrawAdapter::Rectangle(int x, int y, int width, int height, const DrawColor& outline,
                               const DrawColor* fill) {
  const mirel::draw::Box b = mirel::draw::BoxOf(x, y, width, height);
  body_ += "<rect" + Attr("x", Centre(b.left)) + Attr("y", Centre(b.top)) + Attr("width", Num(b.right - b.left)) +
           Attr("height", Num(b.bottom - b.top)) + Attr("fill", fill != nullptr ? Hex(Brush(*fill)) : "none") +
           Attr("stroke", Hex(Pen(outline))) + Attr("stroke-width", "1") + "/>\n";
}

void SvgDrawAdapter::DrawRectangle(int x, int y, int width, int height, const DrawColor& color) {
  Rectangle(x, y, width, height, color, nullptr);
}

void SvgDrawAdapter::FillRectangle(int x, int y, int width, int height, const DrawColor& outline,
                                   const DrawColor& fill) {
  Rectangle(x, y, width, height, outline, &fill);
}

void SvgDrawAdapter::Ellipse(int x, int y, int width, int height, const DrawColor& outline, const DrawColor* fill) {
  const mirel::draw::Box b = mirel::draw::BoxOf(x, y, width, height);
  body_ += "<ellipse" + Attr("cx", Num(0.5 * static_cast<double>(b.left + b.right) + 0.5)) +
           Attr("cy", Num(0.5 * static_cast<double>(b.top + b.bottom) + 0.5)) +
           Attr("rx", Num(0.5 * static_cast<double>(b.right - b.left))) +
           Attr("ry", Num(0.5 * static_cast<double>(b.bottom - b.top))) +
           Attr("fill", fill != nullptr ? Hex(Brush(*fill)) : "none") + Attr("stroke", Hex(Pen(outline))) +
           Attr("stroke-width", "1") + "/>\n";
}

void SvgDrawAdapter::DrawEllipse(int x, int y, int width, int height, const DrawColor& color) {
  Ellipse(x, y, width, height, color, nullptr);
}

void SvgDrawAdapter::FillEllipse(int x, int y, int width, int height, const DrawColor& outline,
                                 const DrawColor& fill) {
  Ellipse(x, y, width, height, outline, &fill);
}

void SvgDrawAdapter::Polygon(const DrawPointArray& points, const DrawColor& outline, const DrawColor* fill) {
  const std::vector<mirel::draw::IntPoint> polygon = mirel::draw::TruncatePoints(points);
  if (polygon.empty()) return;
  std::string list;
  for (const auto& p : polygon) list += (list.empty() ? "" : " ") + Centre(p.x) + "," + Centre(p.y);
  body_ += "<polygon" + Attr("points", list) + Attr("fill", fill != nullptr ? Hex(Brush(*fill)) : "none") +
           Attr("fill-rule", "evenodd") + Attr("stroke", Hex(Pen(outline))) + Attr("stroke-width", "1") +
           Attr("stroke-linejoin", "miter") + "/>\n";
}

void SvgDrawAdapter::DrawPolygon(const DrawPointArray& points, const DrawColor& color) {
  Polygon(points, color, nullptr);
}

void SvgDrawAdapter::FillPolygon(const DrawPointArray& points, const DrawColor& outline, const DrawColor& fill) {
  Polygon(points, outline, &fill);
}

void SvgDrawAdapter::WriteText(const char* text, int x, int y, const DrawColor& color,
                               const DrawColor* background) {
  const int scale = GetTextScale();
  const mirel::draw::TextLayout layout = mirel::draw::LayOutText(text, x, y, scale);
  if (background != nullptr)
    body_ += "<rect" + Attr("x", std::to_string(x)) + Attr("y", std::to_string(y)) +
             Attr("width", Num(static_cast<double>(layout.boxWidth))) +
             Attr("height", Num(static_cast<double>(layout.boxHeight))) + Attr("fill", Hex(Background(*background))) +
             "/>\n";
  for (std::size_t i = 0; i < layout.lines.size(); ++i) {
    const mirel::draw::TextLine& line = layout.lines[i];
    const double width = static_cast<double>(line.length) * mirel::draw::kCellWidth * scale;
    // The baseline lies under the seventh row of the glyphs.
    body_ += "<text" + Attr("x", Num(static_cast<double>(layout.lineX[i]) + 0.5 * width)) +
             Attr("y", Num(static_cast<double>(layout.lineY[i]) + 7.0 * scale)) + Attr("fill", Hex(Text(color))) +
             Attr("font-family", "monospace") + Attr("font-size", Num(10.0 * scale)) +
             Attr("text-anchor", "middle") + Attr("xml:space", "preserve") + ">" + Escape(line.text, line.length) +
             "</text>\n";
  }
}

void SvgDrawAdapter::DrawText(const char* text, int x, int y, const DrawColor& color) {
  WriteText(text, x, y, color, nullptr);
}

void SvgDrawAdapter::DrawTextBox(const char* text, int x, int y, const DrawColor& textColor,
                                 const DrawColor& background) {
  WriteText(text, x, y, textColor, &background);
}

void SvgDrawAdapter::DrawImage(const EGenericROI* image, int x, int y, float zoomX, float zoomY, double opacity,
                               const DrawColor& tint) {
  mirel::draw::ImagePlan plan;
  if (!mirel::draw::PlanImage(image, zoomX, zoomY, opacity, tint, plan)) return;
  unsigned char tintBytes[3];
  Components(tint, tintBytes);
  const mirel::draw::ImageRowReader reader(image, plan.type, plan.tinted ? tintBytes : nullptr);
  // A 24-bit BMP: rows bottom up, blue green red, each row padded to 4 bytes.
  const std::size_t rowBytes = (static_cast<std::size_t>(plan.width) * 3 + 3) & ~static_cast<std::size_t>(3);
  const std::size_t dataBytes = rowBytes * static_cast<std::size_t>(plan.height);
  std::vector<unsigned char> bmp;
  bmp.reserve(54 + dataBytes);
  bmp.push_back('B');
  bmp.push_back('M');
  Le(bmp, static_cast<unsigned>(54 + dataBytes), 4);
  Le(bmp, 0, 4);
  Le(bmp, 54, 4);
  Le(bmp, 40, 4);
  Le(bmp, static_cast<unsigned>(plan.width), 4);
  Le(bmp, static_cast<unsigned>(plan.height), 4);
  Le(bmp, 1, 2);
  Le(bmp, 24, 2);
  Le(bmp, 0, 4);
  Le(bmp, static_cast<unsigned>(dataBytes), 4);
  Le(bmp, 2835, 4);
  Le(bmp, 2835, 4);
  Le(bmp, 0, 4);
  Le(bmp, 0, 4);
  const bool redFirst = GetColorOrder() == ColorOrder::RedGreenBlue;
  std::vector<unsigned char> row(static_cast<std::size_t>(plan.width) * 3);
  for (int j = plan.height - 1; j >= 0; --j) {
    reader.Read(j, row.data());
    for (int i = 0; i < plan.width; ++i) {
      const unsigned char* s = &row[3 * static_cast<std::size_t>(i)];
      bmp.push_back(s[redFirst ? 2 : 0]);
      bmp.push_back(s[1]);
      bmp.push_back(s[redFirst ? 0 : 2]);
    }
    bmp.resize(bmp.size() + rowBytes - row.size(), 0);
  }
  std::string uri = "data:image/bmp;base64,";
  Base64(bmp, uri);
  body_ += "<image" + Attr("x", std::to_string(x)) + Attr("y", std::to_string(y)) +
           Attr("width", Num(static_cast<double>(plan.drawWidth))) +
           Attr("height", Num(static_cast<double>(plan.drawHeight))) + Attr("preserveAspectRatio", "none") +
           Attr("style", "image-rendering:pixelated");
  if (plan.opacity < 1.0) body_ += Attr("opacity", Num(plan.opacity));
  body_ += Attr("xlink:href", uri) + "/>\n";
}

}  // namespace Corvane
