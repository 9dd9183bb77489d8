// Arrays in the library's layout: A(0:L, 0:M) column-major, so that entry
// (a, b) sits at a + b*(L+1). The routines count from 1 and leave row 0 and
// column 0 alone; allocating them keeps a host's 1-based indices unchanged.
using System;

namespace Shellfe
{
    public static class ColumnMajor
    {
        /// <summary>Leading dimension of an array whose rows run 0..rows.</summary>
        public static int Ld(int rows) { return rows + 1; }

        /// <summary>Flat position of (a, b) with leading dimension ld.</summary>
        public static int Index(int a, int b, int ld) { return a + b * ld; }

        /// <summary>A flat array for (0:rows, 0:cols), zeroed.</summary>
        public static T[] Alloc<T>(int rows, int cols)
        {
            if (rows < 0 || cols < 0)
                throw new ArgumentOutOfRangeException(rows < 0 ? "rows" : "cols", "upper bounds must not be negative");
            return new T[checked((rows + 1) * (cols + 1))];
        }
    }

    /// <summary>A (0:Rows, 0:Cols) array and its flat storage, which is what
    /// the routines take.</summary>
    public sealed class ColumnMajor<T>
    {
        public readonly T[] Data;
        public readonly int Rows, Cols;

        public ColumnMajor(int rows, int cols)
        {
            Data = ColumnMajor.Alloc<T>(rows, cols);
            Rows = rows;
            Cols = cols;
        }

        public int Ld { get { return Rows + 1; } }

        public T this[int a, int b]
        {
            get { return Data[At(a, b)]; }
            set { Data[At(a, b)] = value; }
        }

        int At(int a, int b)
        {
            // Flat storage would silently wrap a row overrun into the next column.
            if ((uint)a > (uint)Rows || (uint)b > (uint)Cols)
                throw new IndexOutOfRangeException(string.Format("({0}, {1}) outside (0:{2}, 0:{3})", a, b, Rows, Cols));
            return a + b * (Rows + 1);
        }
    }
}
