// Writing and reading attributes through memory, beside what a host would take instead.
//
//   bench_object --benchmark_min_time=0.5
//
// One item is a name and a value; by turns an int, a double and a string of twelve characters.

#include <cstdint>
#include <cstring>
#include <streambuf>
#include <string>
#include <variant>
#include <vector>

#include <QDataStream>
#include <QString>
#include <QVariant>
#include <benchmark/benchmark.h>
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/string.hpp>

#include <ZxCore3D/object/TMemoryStream.h>
#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>

namespace {

using namespace Zx3D;

constexpr std::size_t s_Count = 100000;

const std::vector<std::string>& Names() {
  static const std::vector<std::string> s_Names = [] {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < s_Count; ++i) {
      names.push_back("attr" + std::to_string(i % 1000));
    }
    return names;
  }();
  return s_Names;
}

// The values of one holder, made by `make(i)`.
template <class T, class Make> std::vector<T> Values(const Make& make) {
  std::vector<T> values(s_Count);
  for (std::size_t i = 0; i < s_Count; ++i) {
    make(i, values[i]);
  }
  return values;
}

std::string Text(std::size_t i) {
  std::string text = "value " + std::to_string(100000 + i % 1000);
  return text;
}

using TStdVariant = std::variant<int, double, std::string>;

std::vector<TStdVariant> PlainValues() {
  return Values<TStdVariant>([](std::size_t i, TStdVariant& value) {
    if (i % 3 == 0) {
      value = static_cast<int>(i);
    } else if (i % 3 == 1) {
      value = static_cast<double>(i) * 0.5;
    } else {
      value = Text(i);
    }
  });
}

std::vector<TVariant> OwnValues() {
  return Values<TVariant>([](std::size_t i, TVariant& value) {
    if (i % 3 == 0) {
      value.Set(static_cast<int>(i));
    } else if (i % 3 == 1) {
      value.Set(static_cast<double>(i) * 0.5);
    } else {
      value.Set(Text(i));
    }
  });
}

void WriteOwn(TMemoryStream& stream, const std::vector<TVariant>& values) {
  TObjectWriter writer(&stream, false);
  for (std::size_t i = 0; i < s_Count; ++i) {
    SaveAttribute(&writer, Names()[i], values[i]);
  }
}

void Items(benchmark::State& state) {
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * s_Count));
}

void Write_ObjectWriter(benchmark::State& state) {
  const auto values = OwnValues();
  TMemoryStream stream;
  for (auto _ : state) {
    stream.SetPos(0);
    stream.SetEOS();
    WriteOwn(stream, values);
    benchmark::ClobberMemory();
  }
  Items(state);
}
BENCHMARK(Write_ObjectWriter);

void Write_ObjectWriter_growing(benchmark::State& state) {
  const auto values = OwnValues();
  for (auto _ : state) {
    TMemoryStream stream;
    WriteOwn(stream, values);
    benchmark::ClobberMemory();
  }
  Items(state);
}
BENCHMARK(Write_ObjectWriter_growing);

void Read_ObjectReader(benchmark::State& state) {
  TMemoryStream stream;
  WriteOwn(stream, OwnValues());
  for (auto _ : state) {
    stream.SetPos(0);
    TObjectReader reader(&stream, false);
    std::string name;
    TVariant value;
    for (std::size_t i = 0; i < s_Count; ++i) {
      benchmark::DoNotOptimize(LoadAttribute(&reader, name, value));
    }
  }
  Items(state);
}
BENCHMARK(Read_ObjectReader);

// A buffer for the archive that costs as little as a stream buffer can.
class TVectorBuffer : public std::streambuf {
public:
  void Open(std::vector<char>& bytes, std::size_t size) {
    setp(bytes.data(), bytes.data() + bytes.size());
    setg(bytes.data(), bytes.data(), bytes.data() + size);
  }
  std::size_t Written() const { return static_cast<std::size_t>(pptr() - pbase()); }
};

constexpr unsigned s_NoHeader = boost::archive::no_header;

// A number for the kind and the value itself: less than half of what the archive takes for a
// boost::variant.
std::size_t WriteBoost(std::vector<char>& bytes, const std::vector<TStdVariant>& values) {
  TVectorBuffer buffer;
  buffer.Open(bytes, 0);
  boost::archive::binary_oarchive archive(buffer, s_NoHeader);
  for (std::size_t i = 0; i < s_Count; ++i) {
    const auto tag = static_cast<std::uint32_t>(values[i].index());
    archive << Names()[i] << tag;
    std::visit([&archive](const auto& value) { archive << value; }, values[i]);
  }
  return buffer.Written();
}

void Write_BoostArchive(benchmark::State& state) {
  const auto values = PlainValues();
  std::vector<char> bytes(s_Count * 80);
  for (auto _ : state) {
    benchmark::DoNotOptimize(WriteBoost(bytes, values));
  }
  Items(state);
}
BENCHMARK(Write_BoostArchive);

template <class T, class Archive> void TakeFrom(Archive& archive, TStdVariant& value) {
  T number{};
  archive >> number;
  value = number;
}

void Read_BoostArchive(benchmark::State& state) {
  std::vector<char> bytes(s_Count * 80);
  const std::size_t size = WriteBoost(bytes, PlainValues());
  for (auto _ : state) {
    TVectorBuffer buffer;
    buffer.Open(bytes, size);
    boost::archive::binary_iarchive archive(buffer, s_NoHeader);
    std::string name;
    TStdVariant value;
    for (std::size_t i = 0; i < s_Count; ++i) {
      std::uint32_t tag = 0;
      archive >> name >> tag;
      if (tag == 0) {
        TakeFrom<int>(archive, value);
      } else if (tag == 1) {
        TakeFrom<double>(archive, value);
      } else {
        archive >> value.emplace<std::string>();
      }
      benchmark::DoNotOptimize(value);
    }
  }
  Items(state);
}
BENCHMARK(Read_BoostArchive);

QByteArray WriteQt(const std::vector<QString>& names, const std::vector<QVariant>& values) {
  QByteArray bytes;
  bytes.reserve(static_cast<int>(s_Count * 80));
  QDataStream stream(&bytes, QIODevice::WriteOnly);
  for (std::size_t i = 0; i < s_Count; ++i) {
    stream << names[i] << values[i];
  }
  return bytes;
}

std::vector<QString> QtNames() {
  std::vector<QString> names;
  for (const std::string& name : Names()) {
    names.push_back(QString::fromStdString(name));
  }
  return names;
}

std::vector<QVariant> QtValues() {
  return Values<QVariant>([](std::size_t i, QVariant& value) {
    if (i % 3 == 0) {
      value = static_cast<int>(i);
    } else if (i % 3 == 1) {
      value = static_cast<double>(i) * 0.5;
    } else {
      value = QString::fromStdString(Text(i));
    }
  });
}

void Write_QDataStream(benchmark::State& state) {
  const auto names = QtNames();
  const auto values = QtValues();
  for (auto _ : state) {
    benchmark::DoNotOptimize(WriteQt(names, values).size());
  }
  Items(state);
}
BENCHMARK(Write_QDataStream);

void Read_QDataStream(benchmark::State& state) {
  const QByteArray bytes = WriteQt(QtNames(), QtValues());
  for (auto _ : state) {
    QDataStream stream(bytes);
    QString name;
    QVariant value;
    for (std::size_t i = 0; i < s_Count; ++i) {
      stream >> name >> value;
      benchmark::DoNotOptimize(value);
    }
  }
  Items(state);
}
BENCHMARK(Read_QDataStream);

// The limit: the same bytes put together by hand, without a stream, checks or padding.
char* PutText(char* to, const std::string& text) {
  const auto size = static_cast<std::uint32_t>(text.size());
  std::memcpy(to, &size, 4);
  std::memcpy(to + 4, text.data(), size);
  return to + 4 + size;
}

std::size_t WritePlain(std::vector<char>& bytes, const std::vector<TStdVariant>& values) {
  char* to = bytes.data();
  for (std::size_t i = 0; i < s_Count; ++i) {
    to = PutText(to, Names()[i]);
    const auto tag = static_cast<std::uint32_t>(values[i].index());
    std::memcpy(to, &tag, 4);
    to += 4;
    if (const int* number = std::get_if<int>(&values[i])) {
      std::memcpy(to, number, sizeof *number);
      to += sizeof *number;
    } else if (const double* real = std::get_if<double>(&values[i])) {
      std::memcpy(to, real, sizeof *real);
      to += sizeof *real;
    } else {
      to = PutText(to, std::get<std::string>(values[i]));
    }
  }
  return static_cast<std::size_t>(to - bytes.data());
}

void Write_memcpy(benchmark::State& state) {
  const auto values = PlainValues();
  std::vector<char> bytes(s_Count * 80);
  for (auto _ : state) {
    benchmark::DoNotOptimize(WritePlain(bytes, values));
    benchmark::ClobberMemory();
  }
  Items(state);
}
BENCHMARK(Write_memcpy);

const char* TakeText(const char* from, std::string& text) {
  std::uint32_t size = 0;
  std::memcpy(&size, from, 4);
  text.assign(from + 4, size);
  return from + 4 + size;
}

template <class T> const char* Take(const char* from, TStdVariant& value) {
  T number;
  std::memcpy(&number, from, sizeof number);
  value = number;
  return from + sizeof number;
}

void Read_memcpy(benchmark::State& state) {
  std::vector<char> bytes(s_Count * 80);
  WritePlain(bytes, PlainValues());
  for (auto _ : state) {
    const char* from = bytes.data();
    std::string name;
    TStdVariant value;
    for (std::size_t i = 0; i < s_Count; ++i) {
      from = TakeText(from, name);
      std::uint32_t tag = 0;
      std::memcpy(&tag, from, 4);
      from += 4;
      if (tag == 0) {
        from = Take<int>(from, value);
      } else if (tag == 1) {
        from = Take<double>(from, value);
      } else {
        from = TakeText(from, value.emplace<std::string>());
      }
      benchmark::DoNotOptimize(value);
    }
  }
  Items(state);
}
BENCHMARK(Read_memcpy);

} // namespace

BENCHMARK_MAIN();
