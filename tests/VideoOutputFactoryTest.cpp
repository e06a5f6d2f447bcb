// The process-wide video-output factory of the decoder library.
#include <cstring>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/IVideoOutput.h>

namespace {

class CountedOutput : public IVideoOutput {
 public:
  explicit CountedOutput(int* live) : m_live(live) { ++*m_live; }
  ~CountedOutput() override { --*m_live; }
  bool Present(unsigned char**, int*, int, int, int) override { return true; }
  void SetOutputRect(int, int, int, int) override {}

 private:
  int* m_live;
};

class VideoOutputFactory : public ::testing::Test {
 protected:
  void TearDown() override { CDecompressor::SetVideoOutputFactory(nullptr); }
};

}  // namespace

TEST_F(VideoOutputFactory, NoneRegisteredMeansNoVideoOutput) {
  EXPECT_FALSE(CDecompressor::HasVideoOutput());
  EXPECT_EQ(nullptr, CDecompressor::CreateVideoOutput());
}

TEST_F(VideoOutputFactory, RegisteredFactoryMakesOutputs) {
  int live = 0;
  CDecompressor::SetVideoOutputFactory([&live] { return new CountedOutput(&live); });
  EXPECT_TRUE(CDecompressor::HasVideoOutput());
  IVideoOutput* first = CDecompressor::CreateVideoOutput();
  IVideoOutput* second = CDecompressor::CreateVideoOutput();
  EXPECT_NE(first, second);
  EXPECT_EQ(2, live);
  CDecompressor::DeleteVideoOutput(first);
  CDecompressor::DeleteVideoOutput(second);
  EXPECT_EQ(nullptr, first);
  EXPECT_EQ(0, live);
}

TEST_F(VideoOutputFactory, UnregisteringRemovesIt) {
  int live = 0;
  CDecompressor::SetVideoOutputFactory([&live] { return new CountedOutput(&live); });
  CDecompressor::SetVideoOutputFactory(nullptr);
  EXPECT_FALSE(CDecompressor::HasVideoOutput());
}

TEST_F(VideoOutputFactory, DeletingNullIsHarmless) {
  IVideoOutput* none = nullptr;
  CDecompressor::DeleteVideoOutput(none);
  EXPECT_EQ(nullptr, none);
}

TEST(VideoOutputInterface, SetOutputRectIsTheFourthTableEntry) {
  // Itanium ABI: a virtual member pointer holds 1 + the byte offset of its table entry.
  auto pointer = &IVideoOutput::SetOutputRect;
  std::ptrdiff_t raw[2];
  std::memcpy(raw, &pointer, sizeof(raw));
  EXPECT_EQ(3, (raw[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}
