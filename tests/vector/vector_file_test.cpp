#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <iterator>
#include <memory>
#include <typeinfo>
#include <sstream>
#include <string>
#include <vector>

#include "test_support.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

// A fresh directory for each test, removed afterwards.
class VectorFile : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = fs::temp_directory_path() /
           ("mirel_vf_" + std::to_string(std::random_device()()) + "_" + info->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
    EOk();
  }
  std::string Path(const char* name) const { return (dir_ / name).string(); }
  static Bytes Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  static void Write(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }
  fs::path dir_;
};

void Le16(Bytes& b, int v) {
  b.push_back(static_cast<unsigned char>(v));
  b.push_back(static_cast<unsigned char>(v >> 8));
}
void Le32(Bytes& b, unsigned int v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<unsigned char>(v >> (8 * i)));
}
Bytes Header(unsigned char type, unsigned int count) {
  Bytes b = {0x45, type, 0x01, static_cast<unsigned char>(type ^ 0x01 ^ 0x45)};
  Le32(b, count);
  return b;
}

TEST(Records, LayoutsAndStreamOutput) {
  EBW8Path p;
  p.m_n16X = -3;
  p.m_n16Y = 0x1234;
  p.m_bw8Pixel = 200;
  unsigned char raw[6];
  std::memcpy(raw, &p, 6);
  const unsigned char expected[6] = {0xFD, 0xFF, 0x34, 0x12, 200, 0};
  EXPECT_EQ(0, std::memcmp(raw, expected, 6));

  std::ostringstream s;
  EPeak peak;
  peak.m_un32Start = 10;
  peak.m_un32Length = 4;
  peak.m_f32Center = 11.5f;
  peak.m_n32Amplitude = -7;
  peak.m_n32Area = 90;
  s << peak;
  EXPECT_EQ(s.str(),
            "( EPeak : m_un32Start = 10 m_un32Length = 4 m_f32Center = 11.5 m_n32Amplitude = -7 m_n32Area = 90)");
  s.str("");
  EPath q;
  q.m_n16X = 1;
  q.m_n16Y = -2;
  s << q;
  EXPECT_EQ(s.str(), "( EPath : m_n16X = 1 m_n16Y = -2)");
  s.str("");
  s << p;
  EXPECT_EQ(s.str(), "( EBW8Path : m_n16X = -3 m_n16Y = 4660 m_bw8Pixel = 200)");
}

TEST(Records, PathAndPeakVectorsConstruction) {
  EPathVector a;
  EXPECT_EQ(a.GetClosed(), 0);
  EXPECT_EQ(a.GetNumElements(), 0u);
  a.SetClosed(1);
  EXPECT_EQ(a.GetClosed(), 1);
  a.AddElement(EPath{3, 4});
  EPathVector copy(a);
  EXPECT_EQ(copy.GetClosed(), 1);
  EXPECT_EQ(copy[0].m_n16Y, 4);
  // CopyTo(nullptr) makes a bare vector, not the named one; the caller owns it.
  std::unique_ptr<EVectorTemplate<EPath>> bare(a.CopyTo(nullptr));
  ASSERT_NE(bare, nullptr);
  const EVectorTemplate<EPath>& made = *bare;
  EXPECT_TRUE(typeid(made) == typeid(EVectorTemplate<EPath>));
  EXPECT_EQ(bare->GetNumElements(), 1u);
  EXPECT_EQ(bare->GetMaxElements(), 1u);
  EBW16PathVector b(12);
  EXPECT_EQ(b.GetMaxElements(), 12u);
  EXPECT_EQ(b.GetNumElements(), 0u);
  EXPECT_NE(b.GetDataPtr(), nullptr);
  EC24PathVector c(0);
  EXPECT_EQ(c.GetDataPtr(), nullptr);
  EBW8PathVector d(3);
  EXPECT_EQ(d.GetMaxElements(), 3u);

  EPeaksVector peaks(5);
  EXPECT_EQ(peaks.GetMaxElements(), 5u);
  EXPECT_EQ(peaks.GetNumElements(), 0u);
  EXPECT_EQ(peaks.GetDataPtr(), nullptr);
  EPeak pk;
  pk.m_n32Area = 3;
  EOk();
  peaks.AddElement(pk);  // the storage is made on the first element
  EXPECT_EQ(EGetError(), E_OK);
  ASSERT_NE(peaks.GetDataPtr(), nullptr);
  EXPECT_EQ(peaks.GetMaxElements(), 5u);
  EXPECT_EQ(peaks[0].m_n32Area, 3);
  EPeaksVector more(4);
  more.SetNumElements(2);
  ASSERT_NE(more.GetDataPtr(), nullptr);
  more[1].m_un32Start = 9;
  EXPECT_EQ(more[1].m_un32Start, 9u);
}

TEST_F(VectorFile, PathFileBytesFollowTheLayout) {
  EPathVector v;
  const short pts[][2] = {{1, 2}, {-1, 300}, {32767, -32768}};
  for (const auto& pt : pts) {
    EPath p;
    p.m_n16X = pt[0];
    p.m_n16Y = pt[1];
    v.AddElement(p);
  }
  const std::string path = Path("path.vec");
  v.Save(path.c_str());
  ASSERT_EQ(EGetError(), E_OK);
  Bytes expected = Header(0x06, 3);
  EXPECT_EQ((Bytes{0x45, 0x06, 0x01, 0x42}), Bytes(expected.begin(), expected.begin() + 4));
  for (const auto& pt : pts) {
    Le16(expected, pt[0]);
    Le16(expected, pt[1]);
  }
  EXPECT_EQ(Read(path), expected);
}

TEST_F(VectorFile, EveryRecordTypeHasItsHeaderAndBytes) {
  {
    EBW8PathVector v;
    EBW8Path p;
    p.m_n16X = 5;
    p.m_n16Y = 6;
    p.m_bw8Pixel = 0xAB;
    v.AddElement(p);
    v.Save(Path("a").c_str());
    Bytes e = Header(0x07, 1);
    Le16(e, 5);
    Le16(e, 6);
    e.push_back(0xAB);
    e.push_back(0);
    EXPECT_EQ(Read(Path("a")), e);
    EXPECT_EQ((Bytes{0x45, 0x07, 0x01, 0x43}), Bytes(e.begin(), e.begin() + 4));
  }
  {
    EC24PathVector v;
    EC24Path p;
    p.m_n16X = -2;
    p.m_n16Y = 7;
    p.m_c24Pixel = EC24(1, 2, 3);
    v.AddElement(p);
    v.Save(Path("b").c_str());
    Bytes e = Header(0x08, 1);
    Le16(e, -2);
    Le16(e, 7);
    e.insert(e.end(), {1, 2, 3, 0});
    EXPECT_EQ(Read(Path("b")), e);
    EXPECT_EQ(e[3], 0x4C);
  }
  {
    EPeaksVector v;
    EPeak p;
    p.m_un32Start = 0x01020304;
    p.m_un32Length = 5;
    p.m_f32Center = 1.0f;
    p.m_n32Amplitude = -1;
    p.m_n32Area = 256;
    v.AddElement(p);
    v.Save(Path("c").c_str());
    Bytes e = Header(0x09, 1);
    Le32(e, 0x01020304);
    Le32(e, 5);
    Le32(e, 0x3F800000);
    Le32(e, 0xFFFFFFFF);
    Le32(e, 256);
    EXPECT_EQ(Read(Path("c")), e);
    EXPECT_EQ(e[3], 0x4D);
  }
  {
    EBW16PathVector v;
    EBW16Path p;
    p.m_n16X = 9;
    p.m_n16Y = 10;
    p.m_bw16Pixel = 0xBEEF;
    v.AddElement(p);
    v.Save(Path("d").c_str());
    Bytes e = Header(0x0B, 1);
    Le16(e, 9);
    Le16(e, 10);
    Le16(e, 0xBEEF);
    EXPECT_EQ(Read(Path("d")), e);
    EXPECT_EQ(e[3], 0x4F);
  }
  EXPECT_EQ(EGetError(), E_OK);
}

template <class V, class Fill>
void RoundTrip(const std::string& path, unsigned int n, Fill fill) {
  testsupport::Rng rng(n);
  V v;
  for (unsigned int i = 0; i < n; ++i) v.AddElement(fill(rng));
  v.Save(path.c_str());
  ASSERT_EQ(EGetError(), E_OK);
  V back;
  back.AddElement(fill(rng));  // replaced by the load
  back.Load(path.c_str());
  ASSERT_EQ(EGetError(), E_OK);
  ASSERT_EQ(back.GetNumElements(), n);
  EXPECT_EQ(back.GetMaxElements(), n);
  if (n != 0) {
    EXPECT_EQ(0, std::memcmp(back.GetDataPtr(), v.GetDataPtr(), n * sizeof(*v.GetDataPtr())));
  }
}

TEST_F(VectorFile, RoundTripOfEveryRecordType) {
  auto s16 = [](testsupport::Rng& r) { return static_cast<short>(r()); };
  for (unsigned int n : {0u, 1u, 37u}) {
    RoundTrip<EPathVector>(Path("p"), n, [&](testsupport::Rng& r) {
      EPath p;
      p.m_n16X = s16(r);
      p.m_n16Y = s16(r);
      return p;
    });
    RoundTrip<EBW8PathVector>(Path("g"), n, [&](testsupport::Rng& r) {
      EBW8Path p;
      p.m_n16X = s16(r);
      p.m_n16Y = s16(r);
      p.m_bw8Pixel = static_cast<unsigned char>(r());
      return p;
    });
    RoundTrip<EBW16PathVector>(Path("h"), n, [&](testsupport::Rng& r) {
      EBW16Path p;
      p.m_n16X = s16(r);
      p.m_bw16Pixel = static_cast<unsigned short>(r());
      return p;
    });
    RoundTrip<EC24PathVector>(Path("c"), n, [&](testsupport::Rng& r) {
      EC24Path p;
      p.m_n16Y = s16(r);
      p.m_c24Pixel = EC24(static_cast<unsigned char>(r()), 4, static_cast<unsigned char>(r()));
      return p;
    });
    RoundTrip<EPeaksVector>(Path("k"), n, [&](testsupport::Rng& r) {
      EPeak p;
      p.m_un32Start = r();
      p.m_f32Center = static_cast<float>(r()) / 7.0f;
      p.m_n32Area = static_cast<int>(r());
      return p;
    });
  }
}

TEST_F(VectorFile, EmptyVectorIsEightBytes) {
  EPathVector v;
  v.Save(Path("e").c_str());
  EXPECT_EQ(Read(Path("e")), Header(0x06, 0));
  EPathVector back(16);
  back.Load(Path("e").c_str());
  EXPECT_EQ(EGetError(), E_OK);
  EXPECT_EQ(back.GetNumElements(), 0u);
  EXPECT_EQ(back.GetMaxElements(), 0u);
  EXPECT_EQ(back.GetDataPtr(), nullptr);
}

// A vector with known content, to show that a refused file leaves it alone.
void Prefill(EPeaksVector& v) {
  for (int i = 0; i < 3; ++i) {
    EPeak p;
    p.m_n32Area = 100 + i;
    v.AddElement(p);
  }
}
void ExpectPrefilled(const EPeaksVector& v) {
  ASSERT_EQ(v.GetNumElements(), 3u);
  EXPECT_EQ(v.GetMaxElements(), 4u);
  for (unsigned int i = 0; i < 3; ++i) EXPECT_EQ(v[i].m_n32Area, static_cast<int>(100 + i));
}

TEST_F(VectorFile, WrongHeaderIsRefusedAndTheVectorUnchanged) {
  EPathVector paths(2);
  paths.AddElement(EPath());
  paths.Save(Path("paths").c_str());
  EPeaksVector v;
  Prefill(v);
  v.Load(Path("paths").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_FILE_HEADER);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Load");
  ExpectPrefilled(v);

  // Each header byte matters: signature, type, version, check.
  for (int i = 0; i < 4; ++i) {
    Bytes b = Header(0x09, 0);
    b[i] ^= 0x10;
    Write(Path("bad"), b);
    v.Load(Path("bad").c_str());
    EXPECT_EQ(EGetError(), E_ERROR_VECTOR_FILE_HEADER) << i;
    ExpectPrefilled(v);
  }
  // A version-2 file with a consistent check byte is refused too.
  Write(Path("v2"), Bytes{0x45, 0x09, 0x02, 0x09 ^ 0x02 ^ 0x45, 0, 0, 0, 0});
  v.Load(Path("v2").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_FILE_HEADER);
  ExpectPrefilled(v);
}

TEST_F(VectorFile, ShortFilesAndBodies) {
  EPeaksVector v;
  Prefill(v);
  Write(Path("empty"), Bytes{});
  v.Load(Path("empty").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Load");
  ExpectPrefilled(v);
  Write(Path("half"), Bytes{0x45, 0x09});
  v.Load(Path("half").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  ExpectPrefilled(v);

  // Header but a count cut short: nothing read, the vector keeps its records.
  Bytes cut = Header(0x09, 0);
  cut.resize(6);
  Write(Path("cut"), cut);
  v.Load(Path("cut").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  ExpectPrefilled(v);

  // A count larger than the body: the elements are made, reading stops at
  // the first short record, the count stays as the file said and what was
  // not read is zero.
  Bytes body = Header(0x09, 5);
  for (int r = 0; r < 2; ++r)
    for (int f = 0; f < 5; ++f) Le32(body, static_cast<unsigned int>(10 * r + f + 1));
  body.insert(body.end(), {1, 2, 3});  // a third record cut short
  Write(Path("short"), body);
  v.Load(Path("short").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  ASSERT_EQ(v.GetNumElements(), 5u);
  EXPECT_EQ(v[1].m_n32Area, 15);
  EXPECT_EQ(v[2].m_un32Start, 0u);
  EXPECT_EQ(v[4].m_n32Area, 0);
}

TEST_F(VectorFile, HugeCountFailsFastWithoutTouchingTheVector) {
  EPeaksVector v;
  Prefill(v);
  for (unsigned int count : {0xFFFFFFFFu, 4000000000u, 0x80000000u, 1000000u}) {
    Bytes b = Header(0x09, count);
    b.resize(b.size() + 20 * 3);  // three records present
    Write(Path("huge"), b);
    v.Load(Path("huge").c_str());
    EXPECT_EQ(EGetError(), E_ERROR_FILE_READ) << count;
    ExpectPrefilled(v);
  }
  // Paths too (4-byte records).
  EPathVector p;
  Write(Path("hp"), Header(0x06, 0xFFFFFFFFu));
  p.Load(Path("hp").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_READ);
  EXPECT_EQ(p.GetNumElements(), 0u);
}

TEST_F(VectorFile, TrailingBytesAreIgnored) {
  Bytes b = Header(0x06, 1);
  Le16(b, 4);
  Le16(b, 5);
  b.insert(b.end(), {9, 9, 9});
  Write(Path("t"), b);
  EPathVector v;
  v.Load(Path("t").c_str());
  EXPECT_EQ(EGetError(), E_OK);
  ASSERT_EQ(v.GetNumElements(), 1u);
  EXPECT_EQ(v[0].m_n16Y, 5);
}

TEST_F(VectorFile, OpenFailuresAndDirectories) {
  EPeaksVector v;
  Prefill(v);
  v.Load(Path("missing").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Load");
  v.Load(static_cast<const char*>(nullptr));
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  v.Save(Path("no/such/dir/file").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Save");
  v.Save(dir_.string().c_str());  // a directory cannot be written as a file
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  v.Load(dir_.string().c_str());  // opens on some systems, but never reads
  EXPECT_TRUE(EGetError() == E_ERROR_FILE_OPEN || EGetError() == E_ERROR_FILE_READ) << EGetError();
  ExpectPrefilled(v);
}

TEST_F(VectorFile, FullDeviceIsACloseOrWriteFailure) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  EPeaksVector v;
  Prefill(v);
  v.Save("/dev/full");
  // The buffered writes succeed and the flush at close fails.
  EXPECT_TRUE(EGetError() == E_ERROR_FILE_CLOSE || EGetError() == E_ERROR_FILE_WRITE) << EGetError();
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Save");
}

std::vector<unsigned short> Utf16(const std::u16string& s) {
  std::vector<unsigned short> w(s.begin(), s.end());
  w.push_back(0);
  return w;
}

TEST_F(VectorFile, SixteenBitPathsAreUtf16) {
  const std::u16string name = u"v\u00e9\u20ac\U0001D11E.vec";
  const std::u16string full = (dir_ / "").u16string() + name;
  EPathVector v;
  EPath p;
  p.m_n16X = 77;
  v.AddElement(p);
  v.Save(Utf16(full).data());
  ASSERT_EQ(EGetError(), E_OK);
  // The same file under its UTF-8 name.
  const std::string utf8 = (dir_ / "").string() + "v\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E.vec";
  Bytes e = Header(0x06, 1);
  Le16(e, 77);
  Le16(e, 0);
  EXPECT_EQ(Read(utf8), e);
  EPathVector back;
  back.Load(Utf16(full).data());
  ASSERT_EQ(EGetError(), E_OK);
  EXPECT_EQ(back[0].m_n16X, 77);

  back.Load(Utf16(full + u"x").data());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Load ( Unicode)");
  std::vector<unsigned short> lone = Utf16(full);
  lone[lone.size() - 2] = 0xD800;  // an unpaired surrogate
  v.Save(lone.data());
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Save ( Unicode)");
  v.Save(static_cast<const unsigned short*>(nullptr));
  EXPECT_EQ(EGetError(), E_ERROR_FILE_OPEN);
}

TEST_F(VectorFile, TypesWithoutAFileFormatTouchNoFile) {
  EVectorTemplate<unsigned int> v(3);
  v.Save(Path("u").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_FILE_HEADER);
  EXPECT_STREQ(EGetErrorTrace(), "EVector::Save");
  EXPECT_FALSE(fs::exists(Path("u")));
  Write(Path("u"), Header(0x06, 0));
  v.Load(Path("u").c_str());
  EXPECT_EQ(EGetError(), E_ERROR_VECTOR_FILE_HEADER);
  EXPECT_EQ(v.GetNumElements(), 3u);
}

TEST_F(VectorFile, SerializeWritesCountAndRecordsOnly) {
  EVectorTemplate<unsigned int> v;
  v.AddElement(0x11223344u);
  v.AddElement(5u);
  std::FILE* f = std::fopen(Path("s").c_str(), "wb");
  ASSERT_NE(f, nullptr);
  EOk();
  v.Serialize(f, 1, 1);
  std::fclose(f);
  EXPECT_EQ(EGetError(), E_OK);
  Bytes e;
  Le32(e, 2);
  Le32(e, 0x11223344u);
  Le32(e, 5);
  EXPECT_EQ(Read(Path("s")), e);
  f = std::fopen(Path("s").c_str(), "rb");
  ASSERT_NE(f, nullptr);
  EVectorTemplate<unsigned int> back;
  back.Serialize(f, 0, 99);  // the version is not looked at
  std::fclose(f);
  EXPECT_EQ(EGetError(), E_OK);
  ASSERT_EQ(back.GetNumElements(), 2u);
  EXPECT_EQ(back[0], 0x11223344u);
}

}  // namespace
