// A drawing adapter that logs every call, one line each, for the tests of
// Draw and of the plot.
#ifndef MIREL_TESTS_VECTOR_DRAW_DRAW_TEST_SUPPORT_H_
#define MIREL_TESTS_VECTOR_DRAW_DRAW_TEST_SUPPORT_H_

#include <sstream>
#include <string>
#include <vector>

#include "mirel/vector/draw/draw_adapter.h"

namespace drawtest {

using Corvane::DrawColor;
using Corvane::DrawPointArray;

inline std::string Name(const DrawColor& c) {
  if (c == Corvane::CurrentColor) return "current";
  std::ostringstream s;
  s << c.m_n32Red << "/" << c.m_n32Green << "/" << c.m_n32Blue;
  return s.str();
}

class RecordingAdapter : public Corvane::DrawAdapter {
 public:
  std::vector<std::string> calls;

  void DrawPixel(int x, int y, const DrawColor& c, double opacity) override {
    Log("DrawPixel", {x, y}, Name(c) + " " + std::to_string(opacity));
  }
  void DrawLine(int x0, int y0, int x1, int y1, const DrawColor& c) override {
    Log("DrawLine", {x0, y0, x1, y1}, Name(c));
  }
  void DrawArc(int x, int y, int w, int h, double a, double s, const DrawColor& c) override {
    Log("DrawArc", {x, y, w, h}, std::to_string(a) + " " + std::to_string(s) + " " + Name(c));
  }
  void DrawRectangle(int x, int y, int w, int h, const DrawColor& c) override {
    Log("DrawRectangle", {x, y, w, h}, Name(c));
  }
  void DrawPolygon(const DrawPointArray& p, const DrawColor& c) override {
    Log("DrawPolygon", {static_cast<int>(p.GetCount())}, Name(c));
  }
  void DrawEllipse(int x, int y, int w, int h, const DrawColor& c) override {
    Log("DrawEllipse", {x, y, w, h}, Name(c));
  }
  void FillRectangle(int x, int y, int w, int h, const DrawColor& o, const DrawColor& f) override {
    Log("FillRectangle", {x, y, w, h}, Name(o) + " " + Name(f));
  }
  void FillEllipse(int x, int y, int w, int h, const DrawColor& o, const DrawColor& f) override {
    Log("FillEllipse", {x, y, w, h}, Name(o) + " " + Name(f));
  }
  void FillPolygon(const DrawPointArray& p, const DrawColor& o, const DrawColor& f) override {
    Log("FillPolygon", {static_cast<int>(p.GetCount())}, Name(o) + " " + Name(f));
  }
  void DrawText(const char* t, int x, int y, const DrawColor& c) override {
    Log("DrawText", {x, y}, std::string(t) + " " + Name(c));
  }
  void DrawTextBox(const char* t, int x, int y, const DrawColor& c, const DrawColor& b) override {
    Log("DrawTextBox", {x, y}, std::string(t) + " " + Name(c) + " " + Name(b));
  }
  void DrawImage(const EGenericROI*, int x, int y, float, float, double, const DrawColor&) override {
    Log("DrawImage", {x, y}, "");
  }
  // Six pixels a character and ten a line, like the built-in font.
  Corvane::DrawSize MeasureText(const char* t) override {
    const std::string s(t);
    return Corvane::DrawSize{6.0 * static_cast<double>(s.size()), s.empty() ? 0.0 : 10.0};
  }
  int GetPenWidth() override { return 1; }

  // The calls whose log line starts with `name`.
  std::vector<std::string> Of(const std::string& name) const {
    std::vector<std::string> out;
    for (const std::string& c : calls)
      if (c.compare(0, name.size() + 1, name + " ") == 0) out.push_back(c);
    return out;
  }

 private:
  void Log(const char* name, std::initializer_list<int> numbers, const std::string& rest) {
    std::ostringstream s;
    s << name;
    for (int n : numbers) s << " " << n;
    if (!rest.empty()) s << " " << rest;
    calls.push_back(s.str());
  }
};

}  // namespace drawtest

#endif  // MIREL_TESTS_VECTOR_DRAW_DRAW_TEST_SUPPORT_H_
