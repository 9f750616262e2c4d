// Dense algebra against Eigen in the same run. Prints, for each size, the time of one call of ours
// and of Eigen's and how many times as fast as Eigen we are. Matrices are n by n unless rows are
// named. Eigen is compiled for the processor that this runs on; build with -march=native.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <eigen3/Eigen/Dense>

#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>

namespace {

using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using Clock = std::chrono::steady_clock;

template <class Work> double Seconds(Work& work, int calls) {
  const auto start = Clock::now();
  for (int i = 0; i < calls; ++i) {
    work();
  }
  return std::chrono::duration<double>(Clock::now() - start).count() / calls;
}

/// How many calls take long enough for the clock. Of two times the shorter counts: a single one may
/// hold an interruption.
template <class Work> int Calls(Work& work) {
  int calls = 1;
  while (calls < 1 << 24 && std::min(Seconds(work, calls), Seconds(work, calls)) * calls < 2e-3) {
    calls *= 2;
  }
  return calls;
}

/// The best times of both, which take turns so that a busy machine is busy for both.
template <class Ours, class Theirs>
void Compare(const char* name, unsigned long n, Ours ours, Theirs theirs) {
  const int ourCalls = Calls(ours), theirCalls = Calls(theirs);
  double our = 1e9, their = 1e9;
  for (int turn = 0; turn < 15; ++turn) {
    our = std::min(our, Seconds(ours, ourCalls));
    their = std::min(their, Seconds(theirs, theirCalls));
  }
  std::printf("%-23s n %4lu  ours %12.3f us  Eigen %12.3f us  ratio %5.2f\n", name, n, our * 1e6,
              their * 1e6, their / our);
}

TMatrixD Random(unsigned long rows, unsigned long columns, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  TMatrixD m(columns, rows);
  for (unsigned long i = 0; i < rows * columns; ++i) {
    m.Data[i] = uniform(random);
  }
  return m;
}

RowMajor Copy(const TMatrixD& m) {
  return Eigen::Map<const RowMajor>(m.Data, static_cast<Eigen::Index>(m.SizeY),
                                    static_cast<Eigen::Index>(m.SizeX));
}

/// Both products of a matrix of any shape and a vector; `label` is appended to their names.
void BenchVectors(unsigned long rows, unsigned long columns, const std::string& label) {
  const TMatrixD a = Random(rows, columns, 1);
  const RowMajor ea = Copy(a);
  TVectorD left(rows), right(columns), sums(columns), image(rows);
  left.Fill(1.0);
  right.Fill(1.0);
  const Eigen::VectorXd eleft = Eigen::VectorXd::Ones(ea.rows());
  const Eigen::VectorXd eright = Eigen::VectorXd::Ones(ea.cols());
  Eigen::VectorXd esums(ea.cols()), eimage(ea.rows());
  Compare(("mul_mtv" + label).c_str(), columns, [&] { mul_mtv(a, left, &sums); },
          [&] { esums.noalias() = ea.transpose() * eleft; });
  Compare(("mul (vector)" + label).c_str(), columns, [&] { mul(a, right, &image); },
          [&] { eimage.noalias() = ea * eright; });
}

void BenchSize(unsigned long n) {
  const TMatrixD a = Random(n, n, 1), b = Random(n, n, 2);
  const RowMajor ea = Copy(a), eb = Copy(b);
  TMatrixD res(n, n);
  RowMajor eres = ea;
  const auto size = static_cast<Eigen::Index>(n);
  Compare(
      "inverse", n, [&] { inverse(a, res); }, [&] { eres.noalias() = ea.inverse(); });
  Compare(
      "mul", n, [&] { mul(a, b, res); }, [&] { eres.noalias() = ea * eb; });
  Compare(
      "mul_mtm", n, [&] { mul_mtm(a, &res); }, [&] { eres.noalias() = ea.transpose() * ea; });
  Compare(
      "transpose", n, [&] { transpose(a, res); }, [&] { eres.noalias() = ea.transpose(); });

  TVectorD right(n), x(n);
  right.Fill(1.0);
  const Eigen::VectorXd eright = Eigen::VectorXd::Ones(size);
  Eigen::VectorXd ex(size);
  BenchVectors(n, n, "");
  Compare(
      "SolveGauss (LU)", n, [&] { SolveGauss(a.Data, n, right.Data, 0.0, x.Data, nullptr); },
      [&] { ex = ea.partialPivLu().solve(eright); });
  TMatrixD work;
  TVectorD workRight;
  Compare(
      "LineSysGauss1 (LU)", n,
      [&] {
        work = a;
        workRight = right;
        LineSysGauss1(work.Data, n, workRight.Data, x.Data);
      },
      [&] { ex = ea.partialPivLu().solve(eright); });
  if (n <= 256) {
    Compare(
        "LineSysGauss2 (full)", n,
        [&] {
          work = a;
          workRight = right;
          LineSysGauss2(work.Data, n, workRight.Data, x.Data);
        },
        [&] { ex = ea.fullPivLu().solve(eright); });
  }

  TMatrixD tall(n, 2 * n);
  std::copy_n(a.Data, n * n, tall.Data);
  std::copy_n(b.Data, n * n, tall.Data + n * n);
  TVectorD tallRight(2 * n);
  tallRight.Fill(1.0);
  const RowMajor etall = Copy(tall);
  const Eigen::VectorXd etallRight = Eigen::VectorXd::Ones(2 * size);
  Compare(
      "lsm (normal, inverse)", n, [&] { lsm(tall, tallRight, &x); },
      [&] {
        eres.noalias() = etall.transpose() * etall;
        ex.noalias() = eres.inverse() * (etall.transpose() * etallRight);
      });
}

} // namespace

int main(int argc, char** argv) {
  std::vector<unsigned long> sizes = {4, 8, 15, 32, 64, 128, 256, 512};
  if (argc > 1) {
    sizes.clear();
    for (int i = 1; i < argc; ++i) {
      sizes.push_back(std::strtoul(argv[i], nullptr, 10));
    }
  }
  for (const unsigned long n : sizes) {
    BenchSize(n);
  }
  if (argc == 1) {
    for (const auto& [rows, columns] :
         {std::pair(3ul, 1000ul), {30, 1000}, {1000, 30}, {1000, 3}}) {
      BenchVectors(rows, columns, ", " + std::to_string(rows) + " rows");
    }
  }
}
