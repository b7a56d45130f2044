/// \file vxStringConversion.h
/// The text form of values, in which they are saved and read back.

#ifndef VX_STRING_CONVERSION_H
#define VX_STRING_CONVERSION_H

#include "vxMat2.h"
#include "vxMat3.h"
#include "vxMat4.h"
#include "vxMat5.h"
#include "vxMat6.h"
#include "vxSubImgBox.h"
#include "vxSubImgBoxf.h"
#include "vxVec10.h"
#include "vxVec16.h"
#include "vxVec2.h"
#include "vxVec3.h"
#include "vxVec32.h"
#include "vxVec4.h"
#include "vxVec5.h"
#include "vxVec6.h"
#include "vxVec64.h"
#include "vxVec7.h"
#include "vxVec8.h"
#include "vxVec9.h"
#include "vxVector.h"

#include <cstddef>
#include <string>

namespace vx {

class Base;

/// Writes values as one line of text and reads them back. All functions are static.
///
/// Numbers look as in the C locale, whatever locale the host has set. Integers come back exactly. A `float` keeps 6
/// significant digits and a `double` or `long double` 15, so that these come back to that precision and not bit for
/// bit. The components of a vector, matrix or box are separated by one blank on writing and by any white space on
/// reading.
///
/// A text is read up to its end or to its first null character; what follows the last number needed is ignored.
/// A failed read is told by the result alone: no function reports, and none throws but newString() and, where there is
/// no memory for a `std::string`, the writing ones. All functions may be called from any thread.
class VX_EXPORT StringConversion {
 public:
  StringConversion() = delete;

  /// \name Numbers
  /// `readFromString` reads one number. The value is assigned in every case, and is 0 if there is no number. A number
  /// beyond the range of its type becomes the nearest limit, an infinity for floating point; types narrower than
  /// `long` take the low bits of the `long`. A minus sign wraps an unsigned number around.
  /// \return whether a number was read; for `int` always true.
  ///
  /// `writeToStdString` gives integers as decimal digits with a sign only where negative (a `char` is a number too),
  /// and floating point numbers as `%g` does, so that infinities and NaN are words.
  ///@{

  /// Reads a number of one type, see above. \param text any text. \param value takes the number.
  static bool readFromString(const std::string& text, char& value);
  static bool readFromString(const std::string& text, unsigned char& value);   ///< \overload
  static bool readFromString(const std::string& text, short& value);           ///< \overload
  static bool readFromString(const std::string& text, unsigned short& value);  ///< \overload
  static bool readFromString(const std::string& text, int& value);             ///< \overload
  static bool readFromString(const std::string& text, unsigned int& value);    ///< \overload
  static bool readFromString(const std::string& text, long& value);            ///< \overload
  static bool readFromString(const std::string& text, unsigned long& value);   ///< \overload
  static bool readFromString(const std::string& text, VXint64& value);         ///< \overload
  static bool readFromString(const std::string& text, VXuint64& value);        ///< \overload
  static bool readFromString(const std::string& text, float& value);           ///< \overload
  static bool readFromString(const std::string& text, double& value);          ///< \overload
  static bool readFromString(const std::string& text, long double& value);     ///< \overload
  /// \return a number of one type as text, see above.
  static std::string writeToStdString(char value);
  static std::string writeToStdString(unsigned char value);   ///< \overload
  static std::string writeToStdString(short value);           ///< \overload
  static std::string writeToStdString(unsigned short value);  ///< \overload
  static std::string writeToStdString(int value);             ///< \overload
  static std::string writeToStdString(unsigned int value);    ///< \overload
  static std::string writeToStdString(long value);            ///< \overload
  static std::string writeToStdString(unsigned long value);   ///< \overload
  static std::string writeToStdString(VXint64 value);         ///< \overload
  static std::string writeToStdString(VXuint64 value);        ///< \overload
  static std::string writeToStdString(float value);           ///< \overload
  static std::string writeToStdString(double value);          ///< \overload
  static std::string writeToStdString(long double value);     ///< \overload
  ///@}

  /// \name Vectors, matrices and boxes
  /// The text holds all components in one line, with no brackets: those of a vector in their order, those of a matrix
  /// row by row, those of a box from x to u of the lower and then of the upper corner.
  ///
  /// `readFromString` assigns the value in every case: the components up to the first one that can't be read are
  /// kept, and the rest are 0. \return whether all components were read.
  ///@{

  /// Reads any of `Tvec2<double>` to `Tvec64<double>`.
  template <class Vec, std::size_t N>
  static bool readFromString(const std::string& text, TvecBase<Vec, double, N>& value) {
    return _scanNumbers(text, value.data(), N);
  }
  /// Writes any of `Tvec2<double>` to `Tvec64<double>`.
  template <class Vec, std::size_t N>
  static std::string writeToStdString(const TvecBase<Vec, double, N>& value) {
    return _VXwriteVecToStdString(value.data(), N);
  }
  /// Reads any of `Tmat2<double>` to `Tmat6<double>`.
  template <class Mat, class Vec>
  static bool readFromString(const std::string& text, TmatBase<Mat, Vec>& value) {
    double components[Vec::size() * Vec::size()];
    const bool isComplete = _scanNumbers(text, components, Vec::size() * Vec::size());
    value.setValues(components);
    return isComplete;
  }
  /// Writes any of `Tmat2<double>` to `Tmat6<double>`.
  template <class Mat, class Vec>
  static std::string writeToStdString(const TmatBase<Mat, Vec>& value) {
    return _VXwriteMatToStdString(value, Vec::size());
  }

  static bool readFromString(const std::string& text, TVector<VXint64>& value);     ///< \overload
  static bool readFromString(const std::string& text, TSubImgBox<VXint64>& value);  ///< \overload
  static bool readFromString(const std::string& text, SubImgBoxf& value);           ///< \overload
  static std::string writeToStdString(const TVector<VXint64>& value);               ///< \overload
  static std::string writeToStdString(const TSubImgBox<VXint64>& value);            ///< \overload
  static std::string writeToStdString(const SubImgBoxf& value);                     ///< \overload
  ///@}

  /// Gives an object its persistent state by Base::setPersistentState(). What that throws passes.
  /// \return true.
  static bool readFromString(const std::string& text, Base& obj);
  /// \return the object's Base::getPersistentState(), which is released again; empty for an object without a state.
  static std::string writeToStdString(const Base& obj);

  /// Copies a text for a caller that wants a C text.
  /// \return the copy with its terminator, never null; the caller releases it by deleteString() or VXFree().
  /// \throw int ::VX_NO_MEMORY after a fatal report.
  static char* newString(const std::string& text);

  /// Releases a text of newString(). Null is ignored.
  static void deleteString(char* text);

  /// Finds the first character that is not a blank. Tabulators and line ends count as such characters.
  /// \param text the text to search. \param startPos position of the first character to look at; a negative one counts
  ///        as 0. \return the position, or the length of the text if there is none.
  static VXint64 getFirstNonSpacePos(const std::string& text, VXint64 startPos);

  /// Formats a number as `%g` does, without trailing zeros.
  /// \param val the number. \param numDigits significant digits at most. \return the text, of at most 1022 characters.
  static std::string _doubleToString(long double val, int numDigits);

 private:
  /// The text between two components: one blank.
  static const std::string& _delimiter();

  /// Reads numbers up to the first one that can't be read; the rest become 0. \param num at most 64.
  static bool _scanNumbers(const std::string& text, double* values, std::size_t num);
  /// \copydoc _scanNumbers()
  static bool _scanNumbers(const std::string& text, VXint64* values, std::size_t num);

  /// Joins the texts of numbers by the delimiter.
  template <class Number>
  static std::string _join(const Number* values, std::size_t num);

  /// The components of a vector, joined by the delimiter. \param vec the first of DIM components.
  static std::string _VXwriteVecToStdString(const double* vec, std::size_t DIM);

  /// The rows of a matrix, each as a vector, joined by the delimiter. \param DIM number of rows.
  template <class Mat>
  static std::string _VXwriteMatToStdString(const Mat& mat, std::size_t DIM) {
    std::string text = _VXwriteVecToStdString(mat[0].data(), DIM);
    for (std::size_t i = 1; i < DIM; ++i) text += _delimiter() + _VXwriteVecToStdString(mat[i].data(), DIM);
    return text;
  }
};

}  // namespace vx

#endif
