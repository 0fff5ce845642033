#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

Bytes Read(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
void Write(const std::string& path, const Bytes& bytes) {
  std::ofstream out(path, std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}
void Le32(Bytes& b, unsigned int v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
Bytes Header(unsigned char type, unsigned int count) {
  Bytes b = {0x45, type, 0x01, static_cast<unsigned char>(type ^ 0x01 ^ 0x45)};
  Le32(b, count);
  return b;
}

// A fresh directory for each test, removed afterwards.
class VectorFile : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() / ("mirel_vf_" + std::to_string(std::random_device()()) + "_" + info->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
    EOk();
  }
  std::string Path(const char* name) const { return (dir_ / name).string(); }
  fs::path dir_;
};

TEST(Records, LayoutAndStreamOutput) {
  const EBW8Path p{-3, 0x1234, EBW8(200)};
  unsigned char raw[6];
  std::memcpy(raw, &p, 6);
  EXPECT_EQ(Bytes(raw, raw + 6), (Bytes{0xFD, 0xFF, 0x34, 0x12, 200, 0}));
  std::ostringstream s;
  s << EPeak{10, 4, 11.5f, -7, 90} << EPath{1, -2} << p;
  EXPECT_EQ(s.str(),
            "( EPeak : m_un32Start = 10 m_un32Length = 4 m_f32Center = 11.5 m_n32Amplitude = -7 m_n32Area = 90)"
            "( EPath : m_n16X = 1 m_n16Y = -2)"
            "( EBW8Path : m_n16X = -3 m_n16Y = 4660 m_bw8Pixel = 200)");
}

TEST(Records, PathAndPeakVectorsConstruction) {
  EPathVector a;
  a.SetClosed(1);
  a.AddElement(EPath{3, 4});
  EXPECT_EQ(EPathVector(a).GetClosed(), 1);
  // CopyTo(nullptr) makes a bare vector, not the named one; the caller owns it.
  std::unique_ptr<EVectorTemplate<EPath>> bare(a.CopyTo(nullptr));
  const EVectorTemplate<EPath>& made = *bare;
  EXPECT_TRUE(typeid(made) == typeid(EVectorTemplate<EPath>));
  EXPECT_EQ(bare->GetMaxElements(), 1u);
  // Path vectors make their storage at construction, peak vectors on the
  // first element or count.
  EBW16PathVector b(12);
  EPeaksVector peaks(5), more(4);
  EXPECT_NE(b.GetDataPtr(), nullptr);
  EXPECT_EQ(peaks.GetDataPtr(), nullptr);
  peaks.AddElement(EPeak{0, 0, 0, 0, 3});
  EXPECT_EQ(peaks.GetMaxElements(), 5u);
  more.SetNumElements(2);
  EXPECT_NE(more.GetDataPtr(), nullptr);
}

// Saves `records`, expects exactly `bytes` in the file, and loads them back
// over a vector that held something else.
template <class V, class R>
void ExpectFile(const std::string& path, std::vector<R> records, const Bytes& bytes) {
  V v, back(16);
  for (const R& r : records) v.AddElement(r);
  v.Save(path.c_str());
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(Read(path), bytes) << typeid(R).name();
  back.AddElement(R{});
  back.Load(path.c_str());
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(back.GetNumElements(), v.GetNumElements());
  EXPECT_EQ(back.GetMaxElements(), v.GetNumElements());
  if (records.empty()) EXPECT_EQ(back.GetDataPtr(), nullptr);
  else EXPECT_EQ(0, std::memcmp(back.GetDataPtr(), v.GetDataPtr(), records.size() * sizeof(R)));
}

TEST_F(VectorFile, EveryRecordTypeHasItsHeaderAndBytesAndLoadsBack) {
  const std::string path = Path("saved");
  ExpectFile<EPathVector, EPath>(path, {}, Bytes{0x45, 0x06, 0x01, 0x42, 0, 0, 0, 0});
  ExpectFile<EPathVector, EPath>(
      path, {{1, 2}, {-1, 300}, {32767, -32768}},
      Bytes{0x45, 0x06, 0x01, 0x42, 3, 0, 0, 0, 1, 0, 2, 0, 0xFF, 0xFF, 0x2C, 0x01, 0xFF, 0x7F, 0x00, 0x80});
  ExpectFile<EBW8PathVector, EBW8Path>(path, {{5, 6, EBW8(0xAB)}},
                                       Bytes{0x45, 0x07, 0x01, 0x43, 1, 0, 0, 0, 5, 0, 6, 0, 0xAB, 0});
  ExpectFile<EC24PathVector, EC24Path>(path, {{-2, 7, EC24(1, 2, 3)}},
                                       Bytes{0x45, 0x08, 0x01, 0x4C, 1, 0, 0, 0, 0xFE, 0xFF, 7, 0, 1, 2, 3, 0});
  ExpectFile<EPeaksVector, EPeak>(path, {{0x01020304, 5, 1.0f, -1, 256}, {7, 8, -2.5f, 9, 10}},
                                  Bytes{0x45, 0x09, 0x01, 0x4D, 2, 0, 0, 0, 4, 3, 2, 1, 5, 0, 0, 0, 0, 0, 0x80, 0x3F,
                                        0xFF, 0xFF, 0xFF, 0xFF, 0, 1, 0, 0, 7, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0x20,
                                        0xC0, 9, 0, 0, 0, 10, 0, 0, 0});
  ExpectFile<EBW16PathVector, EBW16Path>(path, {{9, 10, EBW16(0xBEEF)}},
                                         Bytes{0x45, 0x0B, 0x01, 0x4F, 1, 0, 0, 0, 9, 0, 10, 0, 0xEF, 0xBE});
}

// A vector with known content, to show that a refused file leaves it alone.
void Prefill(EPeaksVector& v) {
  for (int i = 0; i < 3; ++i) v.AddElement(EPeak{0, 0, 0, 0, 100 + i});
}
void ExpectPrefilled(const EPeaksVector& v) {
  ASSERT_EQ(v.GetNumElements(), 3u);
  EXPECT_EQ(v.GetMaxElements(), 4u);
  for (unsigned int i = 0; i < 3; ++i) EXPECT_EQ(v[i].m_n32Area, static_cast<int>(100 + i));
}

TEST_F(VectorFile, RefusedFilesLeaveTheVectorUnchanged) {
  std::vector<std::pair<Bytes, E_ERRORS>> cases = {
      {Header(0x06, 0), E_ERROR_VECTOR_FILE_HEADER},  // another record type
      {Bytes{0x45, 0x09, 0x02, 0x09 ^ 0x02 ^ 0x45, 0, 0, 0, 0}, E_ERROR_VECTOR_FILE_HEADER},  // version 2
      {Bytes{}, E_ERROR_FILE_READ},
      {Bytes{0x45, 0x09}, E_ERROR_FILE_READ},
      {Bytes{0x45, 0x09, 0x01, 0x4D, 0, 0}, E_ERROR_FILE_READ},  // count cut short
  };
  for (int i = 0; i < 4; ++i) {  // each header byte matters: signature, type, version, check
    cases.push_back({Header(0x09, 0), E_ERROR_VECTOR_FILE_HEADER});
    cases.back().first[static_cast<size_t>(i)] ^= 0x10;
  }
  for (unsigned int count : {0xFFFFFFFFu, 4000000000u, 0x80000000u, 1000000u}) {  // fails fast
    cases.push_back({Header(0x09, count), E_ERROR_FILE_READ});
    cases.back().first.resize(8 + 20 * 3);  // three records present
  }
  EPeaksVector v;
  Prefill(v);
  for (size_t i = 0; i < cases.size(); ++i) {
    Write(Path("bad"), cases[i].first);
    v.Load(Path("bad").c_str());
    EXPECT_EQ(EGetError(), cases[i].second) << i;
    EXPECT_STREQ(EGetErrorTrace(), "EVector::Load");
    ExpectPrefilled(v);
  }
  EPathVector p;  // a huge count of 4-byte records too
  Write(Path("hp"), Header(0x06, 0xFFFFFFFFu));
  p.Load(Path("hp").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  EXPECT_EQ(p.GetNumElements(), 0u);
}

TEST_F(VectorFile, ShortBodyAndTrailingBytes) {
  // A count larger than the body: reading stops at the first short record,
  // and the vector holds the records read.
  Bytes body = Header(0x09, 5);
  for (unsigned int i = 1; i <= 10; ++i) Le32(body, i + (i > 5 ? 5 : 0));
  body.insert(body.end(), {1, 2, 3});  // a third record cut short
  Write(Path("short"), body);
  EPeaksVector v;
  Prefill(v);
  v.Load(Path("short").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  ASSERT_EQ(v.GetNumElements(), 2u);
  EXPECT_EQ(v[1].m_n32Area, 15);

  Write(Path("t"), Bytes{0x45, 0x06, 0x01, 0x42, 1, 0, 0, 0, 4, 0, 5, 0, 9, 9, 9});
  EPathVector p;
  p.Load(Path("t").c_str());
  EXPECT_EQ(EGetError(), E_OK);
  ASSERT_EQ(p.GetNumElements(), 1u);
  EXPECT_EQ(p[0].m_n16Y, 5);
}

std::vector<unsigned short> Utf16(const std::u16string& s) {
  std::vector<unsigned short> w(s.begin(), s.end());
  w.push_back(0);
  return w;
}

TEST_F(VectorFile, SixteenBitPathsAreUtf16) {
  const std::u16string name = u"v\u00e9\u20ac\U0001D11E.vec";
  const std::u16string full = (dir_ / "").u16string() + name;
  EPathVector v, back;
  v.AddElement(EPath{77, 0});
  v.Save(Utf16(full).data());
  ASSERT_EQ(EGetError(), E_OK);
  // The directory holds that one name (UTF-16 on Windows, UTF-8 elsewhere).
  const fs::directory_iterator entry(dir_);
  ASSERT_NE(entry, fs::directory_iterator());
  EXPECT_EQ(entry->path().filename().u16string(), name);
#if !defined(_WIN32)
  EXPECT_EQ(Read((dir_ / "").string() + "v\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E.vec"),
            (Bytes{0x45, 0x06, 0x01, 0x42, 1, 0, 0, 0, 77, 0, 0, 0}));
#endif
  EXPECT_EQ(Read(dir_ / fs::path(name)), (Bytes{0x45, 0x06, 0x01, 0x42, 1, 0, 0, 0, 77, 0, 0, 0}));
  back.Load(Utf16(full).data());
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(back[0].m_n16X, 77);
}

TEST_F(VectorFile, OpenFailuresAndTypesWithoutAFormatLeaveTheVector) {
  EPeaksVector v;
  EVectorTemplate<unsigned int> plain(3);  // no file format: touches no file
  Prefill(v);
  std::vector<unsigned short> missing = Utf16((dir_ / "missing").u16string()), lone = missing;
  lone[lone.size() - 2] = 0xD800;  // an unpaired surrogate
  Write(Path("paths"), Header(0x06, 0));
  const struct { std::function<void()> call; E_ERRORS code; const char* label; } cases[] = {
      {[&] { v.Load(Path("missing").c_str()); }, E_ERROR_FILE_OPEN, "EVector::Load"},
      {[&] { v.Load(static_cast<const char*>(nullptr)); }, E_ERROR_FILE_OPEN, "EVector::Load"},
      {[&] { v.Save(Path("no/such/dir/file").c_str()); }, E_ERROR_FILE_OPEN, "EVector::Save"},
      {[&] { v.Save(dir_.string().c_str()); }, E_ERROR_FILE_OPEN, "EVector::Save"},  // a directory
      {[&] { v.Load(missing.data()); }, E_ERROR_FILE_OPEN, "EVector::Load ( Unicode)"},
      {[&] { v.Save(lone.data()); }, E_ERROR_FILE_OPEN, "EVector::Save ( Unicode)"},
      {[&] { v.Save(static_cast<const unsigned short*>(nullptr)); }, E_ERROR_FILE_OPEN, "EVector::Save ( Unicode)"},
      {[&] { plain.Save(Path("plain").c_str()); }, E_ERROR_VECTOR_FILE_HEADER, "EVector::Save"},
      {[&] { plain.Load(Path("paths").c_str()); }, E_ERROR_VECTOR_FILE_HEADER, "EVector::Load"},
  };
  for (const auto& c : cases) {
    c.call();
    EXPECT_EQ(EGetError(), c.code) << c.label;
    EXPECT_STREQ(EGetErrorTrace(), c.label);
  }
  ExpectPrefilled(v);
  EXPECT_EQ(plain.GetNumElements(), 3u);
  EXPECT_FALSE(fs::exists(Path("plain")));
  v.Load(dir_.string().c_str());  // opens on some systems, but never reads
  EXPECT_TRUE(EGetError() == E_ERROR_FILE_OPEN || EGetError() == E_ERROR_FILE_READ) << EGetError();
  ExpectPrefilled(v);
  if (fs::exists("/dev/full")) {  // the buffered writes succeed and the flush at close fails
    v.Save("/dev/full");
    EXPECT_TRUE(EGetError() == E_ERROR_FILE_CLOSE || EGetError() == E_ERROR_FILE_WRITE) << EGetError();
    EXPECT_STREQ(EGetErrorTrace(), "EVector::Save");
  }
}

TEST_F(VectorFile, SerializeWritesCountAndRecordsOnly) {
  EVectorTemplate<unsigned int> v, back;
  v.AddElement(0x11223344u);
  v.AddElement(5u);
  std::FILE* f = std::fopen(Path("s").c_str(), "wb");
  ASSERT_NE(f, nullptr);
  EOk();
  v.Serialize(f, 1, 1);
  std::fclose(f);
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(Read(Path("s")), (Bytes{2, 0, 0, 0, 0x44, 0x33, 0x22, 0x11, 5, 0, 0, 0}));
  f = std::fopen(Path("s").c_str(), "rb");
  ASSERT_NE(f, nullptr);
  back.Serialize(f, 0, 99);  // the version is not looked at
  std::fclose(f);
  EXPECT_EQ(EGetError(), E_OK);
  ASSERT_EQ(back.GetNumElements(), 2u);
  EXPECT_EQ(back[0], 0x11223344u);
}

}  // namespace
