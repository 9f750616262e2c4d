// The places of virtual operations and the fields of the object model's records, in order: callers
// are compiled against both.

#include <cstddef>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <ZxCore3D/object/QUERYHDR.h>
#include <ZxCore3D/object/STORE_BLOCK.h>
#include <ZxCore3D/object/TAttributes.h>
#include <ZxCore3D/object/TCreator.h>
#include <ZxCore3D/object/TFileStream.h>
#include <ZxCore3D/object/TMemoryStream.h>
#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>
#include <ZxCore3D/object/TStdStream.h>
#include <ZxCore3D/object/TStream.h>

#include "VirtualSlot.h"
#include "object/Streams.h"

using namespace Zx3D;
using zx_test::SlotOf;

namespace {

/// The value of a `T` that lies `offset` bytes into `object`.
template <class T, class TObject> T FieldAt(const TObject& object, std::size_t offset) {
  EXPECT_LE(offset + sizeof(T), sizeof(TObject));
  T value;
  std::memcpy(&value, reinterpret_cast<const char*>(&object) + offset, sizeof(value));
  return value;
}

TEST(Layout, SlotsOfAStream) {
  EXPECT_EQ(SlotOf(&TStream::IsEOS), 2u);
  EXPECT_EQ(SlotOf(&TStream::SetEOS), 3u);
  EXPECT_EQ(SlotOf(&TStream::ReadLine), 4u);
  EXPECT_EQ(SlotOf(&TStream::GetPos), 5u);
  EXPECT_EQ(SlotOf(&TStream::GetPosE), 6u);
  EXPECT_EQ(SlotOf(&TStream::SetPos), 7u);
  EXPECT_EQ(SlotOf(&TStream::SetPosE), 8u);
  EXPECT_EQ(SlotOf(&TStream::GetSize), 9u);
  EXPECT_EQ(SlotOf(&TStream::SetSize), 10u);
  EXPECT_EQ(SlotOf(&TStream::ReadAll), 11u);
  EXPECT_EQ(SlotOf(&TStream::ReadAllE), 12u);
  EXPECT_EQ(SlotOf(&TStream::WriteAll), 13u);
  EXPECT_EQ(SlotOf(&TStream::_Read), 14u);
  EXPECT_EQ(SlotOf(&TStream::_Write), 15u);
  EXPECT_EQ(SlotOf(&TStream::Skip), 16u);
  EXPECT_EQ(SlotOf(&TStream::Map), 17u);
  EXPECT_EQ(SlotOf(&TStream::Unmap), 18u);
  EXPECT_EQ(SlotOf(&TStream::SupportMap), 19u);
  EXPECT_EQ(sizeof(TStream), sizeof(void*)) << "no fields";
}

TEST(Layout, SlotsOfASelfCreatingRef) {
  EXPECT_EQ(SlotOf(&TSelfCreatingRef::AddRef), 2u);
  EXPECT_EQ(SlotOf(&TSelfCreatingRef::Release), 3u);
  EXPECT_EQ(SlotOf(&TSelfCreatingRef::QueryInterface), 4u);
  EXPECT_EQ(SlotOf(&TSelfCreatingRef::GetCreator), 5u);
  EXPECT_EQ(SlotOf(&TSelfCreatingRef::GetClassName), 6u);
  EXPECT_EQ(sizeof(TSelfCreatingRef), sizeof(zx::TRef)) << "no field of its own";
}

TEST(Layout, ACreatorIsItsParentAndItsName) {
  EXPECT_EQ(SlotOf(&TCreator::CreateInstance), 0u) << "its only virtual operation";
  EXPECT_EQ(sizeof(TCreator), 8u + 8 + 64);
  TSelfCreatingRef::TSelfCreator creator(&TSelfCreatingRef::s_Creator);
  EXPECT_EQ(FieldAt<TCreator*>(creator, 8), &TSelfCreatingRef::s_Creator);
  EXPECT_STREQ(reinterpret_cast<const char*>(&creator) + 16, "TSelfCreatingRef");
}

TEST(Layout, AFileStreamIsOnePointer) {
  EXPECT_EQ(sizeof(TFileStream), 16u);
  TFileStream stream;
  EXPECT_EQ(FieldAt<void*>(stream, 8), nullptr) << "while it is closed";
  ASSERT_TRUE(stream.Open("/dev/null"));
  EXPECT_NE(FieldAt<void*>(stream, 8), nullptr);
  stream.Close();
  EXPECT_EQ(FieldAt<void*>(stream, 8), nullptr);
}

TEST(Layout, AMemoryStreamsFields) {
  EXPECT_EQ(sizeof(TMemoryStream), 48u);
  unsigned char block[32];
  TMemoryStream stream(block, 11, 32, false);
  ASSERT_TRUE(stream.SetPos(7));
  EXPECT_EQ(FieldAt<void*>(stream, 8), block);
  EXPECT_EQ(FieldAt<unsigned long>(stream, 16), 11u) << "size";
  EXPECT_EQ(FieldAt<unsigned long>(stream, 24), 32u) << "capacity";
  EXPECT_EQ(FieldAt<long>(stream, 32), 7) << "position";
  EXPECT_EQ(FieldAt<unsigned char>(stream, 40), 0) << "owned";
  EXPECT_EQ(FieldAt<unsigned char>(TMemoryStream(), 40), 1);
  EXPECT_EQ(offsetof(TBuffer<unsigned char>, Data), 0u);
  EXPECT_EQ(sizeof(TBuffer<unsigned char>), 24u);
}

TEST(Layout, AMappingsFields) {
  EXPECT_EQ(offsetof(TStreamMapping, Offset), 0u);
  EXPECT_EQ(offsetof(TStreamMapping, Size), 8u);
  EXPECT_EQ(offsetof(TStreamMapping, Data), 16u);
  EXPECT_EQ(offsetof(TStreamMapping, Read), 24u);
  EXPECT_EQ(offsetof(TStreamMapping, Write), 25u);
  EXPECT_EQ(offsetof(TStreamMapping, Reserved), 28u);
  EXPECT_EQ(sizeof(TStreamMapping), 32u);
  char bytes[8] = {};
  TMemoryStream stream(bytes, 8, false);
  void* data = nullptr;
  auto* const mapping = static_cast<TStreamMapping*>(stream.Map(2, 5, true, false, &data));
  ASSERT_NE(mapping, nullptr);
  EXPECT_EQ(mapping->Offset, 2);
  EXPECT_EQ(mapping->Size, 5u);
  EXPECT_EQ(mapping->Data, bytes + 2);
  EXPECT_TRUE(mapping->Read);
  EXPECT_FALSE(mapping->Write);
  EXPECT_EQ(mapping->Reserved, 0u);
  EXPECT_TRUE(stream.Unmap(mapping));
}

TEST(Layout, AStdStreamAddsOnePointer) {
  EXPECT_EQ(sizeof(TStdStream), sizeof(TZxStream) + 8);
  TMemoryStream stream;
  const TStdStream adapter(&stream);
  EXPECT_EQ(FieldAt<TStream*>(adapter, sizeof(TZxStream)), &stream);
}

TEST(Layout, AWritersFields) {
  EXPECT_EQ(sizeof(TObjectWriter), 16u);
  TMemoryStream stream;
  const TObjectWriter writer(&stream, false);
  EXPECT_EQ(FieldAt<TStream*>(writer, 0), &stream);
  EXPECT_EQ(FieldAt<unsigned char>(writer, 8), 0) << "owned";
  EXPECT_EQ(FieldAt<unsigned char>(writer, 9), 0) << "reserved";
  const TObjectWriter owner(new TMemoryStream, true);
  EXPECT_EQ(FieldAt<unsigned char>(owner, 8), 1);
  EXPECT_EQ(FieldAt<unsigned char>(owner, 9), 0);
  const TObjectWriter empty;
  EXPECT_EQ(FieldAt<TStream*>(empty, 0), nullptr);
  EXPECT_EQ(FieldAt<unsigned char>(empty, 8), 0);
  EXPECT_EQ(FieldAt<unsigned char>(empty, 9), 0);
}

unsigned long Answer(void*, QUERYHDR*) { return 0; }

TEST(Layout, AReadersFields) {
  EXPECT_EQ(sizeof(TObjectReader), 56u);
  TMemoryStream stream;
  int context = 0;
  TObjectReader reader(&stream, false);
  EXPECT_EQ(FieldAt<TStream*>(reader, 0), &stream);
  EXPECT_EQ(FieldAt<unsigned char>(reader, 8), 0) << "owned";
  EXPECT_EQ(FieldAt<void*>(reader, 16), nullptr);
  EXPECT_EQ(FieldAt<void*>(reader, 24), nullptr);
  EXPECT_EQ(FieldAt<void*>(reader, 32), nullptr);
  EXPECT_EQ(FieldAt<unsigned long>(reader, 40), 0u);
  reader.SetQueryFunc(Answer, &context);
  ASSERT_TRUE(reader.ReserveTmp(100));
  EXPECT_EQ(FieldAt<void*>(reader, 16), &context);
  EXPECT_EQ(FieldAt<TObjectReader::TQueryFunc>(reader, 24), &Answer);
  EXPECT_NE(FieldAt<void*>(reader, 32), nullptr) << "scratch";
  EXPECT_EQ(FieldAt<unsigned long>(reader, 40), 100u) << "its capacity, exactly as asked for";
  EXPECT_EQ(FieldAt<unsigned char>(reader, 48), 0) << "reserved";
  const TObjectReader owner(new TMemoryStream, true);
  EXPECT_EQ(FieldAt<unsigned char>(owner, 8), 1);
}

TEST(Layout, RecordsOfBlocksAndQueries) {
  EXPECT_EQ(offsetof(STORE_BLOCK, Pos), 0u);
  EXPECT_EQ(offsetof(STORE_BLOCK, Size), 8u);
  EXPECT_EQ(sizeof(STORE_BLOCK), 16u);
  EXPECT_EQ(offsetof(QUERYHDR, Code), 0u);
  EXPECT_EQ(offsetof(QUERYHDR, Kind), 8u);
  EXPECT_EQ(offsetof(QUERYHDR, Id), 16u);
  EXPECT_EQ(sizeof(QUERYHDR), 24u);
}

TEST(Layout, AVariantsFields) {
  EXPECT_EQ(offsetof(TVariant, Value), 0u);
  EXPECT_EQ(offsetof(TVariant, Count), 32u);
  EXPECT_EQ(offsetof(TVariant, Type), 40u);
  EXPECT_EQ(sizeof(TVariant::Value), 32u);
  EXPECT_EQ(sizeof(TVariant::Count), 8u);
  EXPECT_EQ(sizeof(TVariant::Type), 4u);
  EXPECT_EQ(sizeof(TAttributes), (sizeof(std::map<std::string, TVariant>)));
}

} // namespace
