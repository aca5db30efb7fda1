#ifndef APPS_ASF_FIGURE_WORLDOPTIONS_H
#define APPS_ASF_FIGURE_WORLDOPTIONS_H

#include <apps/asf/console.h>
#include <qexfigure/kqexfigurepose.h>

#include <string>

namespace asfapp
{

/// Options for where an output has the figure in the world, and in which unit.
struct KWorldOptions
{
    double      mScale = 1;
    std::string mUnits; ///< "cm", "m", "in" or "file"; empty: the format's own.
    std::string mUp;    ///< "y" or "z"; empty: y.
    bool        mInPlace = false;
    double      mFileUnit = 1; ///< Centimetres per unit of the file that was read; of use after SetFileUnit().

    bool IsZUp() const { return mUp == "z"; }

    /// Centimetres per unit of length of the output: that of --units, else 1.
    double GetUnit() const;

    /// Units of the output per centimetre of the figure.
    double GetFactor() const { return mScale / GetUnit(); }

    /// The unit and axes of the output.
    qexsdk::KQexOutputSpace GetSpace() const;
};

/// Records the unit of the source: an ASF file's length unit; centimetres in BVH, metres in glTF.
void SetFileUnit(KWorldOptions& pOptions, const qexsdk::KQexFigureFiles& pFiles, const qexsdk::KQexFigure& pFigure);

/// The length unit of an ASF file for the unit of --units.
double LengthUnitOf(const KWorldOptions& pOptions);

/// False, with an error, if --units contradicts \p pLengthUnit (0: not given). Before SetFileUnit(), --units file contradicts nothing.
bool CheckLengthUnit(const KWorldOptions& pOptions, double pLengthUnit, bool pIsLoaded, KConsole& pConsole);

/// Applies --in-place to a loaded figure.
void HoldInPlace(const KWorldOptions& pOptions, qexsdk::KQexFigure& pFigure);

} // namespace asfapp

#endif
