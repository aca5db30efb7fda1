#ifndef APPS_ASF_FIGURE_SKELETONEDIT_H
#define APPS_ASF_FIGURE_SKELETONEDIT_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <vector>

namespace asfapp
{

/// Changes to a skeleton's model, as read with both frame flags false, such that writing it gives the same skeleton with these
/// changes. Each says what it could not do.
class KSkeletonEdit
{
public:
    explicit KSkeletonEdit(qexsdk::KQexAsfScene& pScene) : mScene(pScene) {}

    /// Gives the bone \p pFrom the name \p pTo. "" when done, else why not.
    std::string Rename(const std::string& pFrom, const std::string& pTo);

    /// Multiplies lengths, and limits of shifts.
    void Scale(double pFactor);

    /// Takes all limits away.
    void DropLimits();

    /// Takes bones without degrees of freedom out where no joint moves by that: those without length, and those that alone hang on
    /// another bone, which then reaches to their end. Warns of the ones that stay.
    void RemoveDummies();

    /// Makes the model ready for the writer, after all changes: lengths in the file's unit, angles in the order that is written.
    /// Warns of what the written file cannot hold.
    void MakeWritable(const qexsdk::KQexAmcSkeletonNotes& pNotes);

    const std::vector<std::string>& GetWarnings() const { return mWarnings; }

private:
    bool IsDummy(const qexsdk::KQexAsfNode& pBone) const;
    bool Dissolve(qexsdk::HKQexAsfNode pBone);
    void WarnOfRoot();
    void WarnOfUnits();

    qexsdk::KQexAsfScene&    mScene;
    std::vector<std::string> mWarnings;
};

} // namespace asfapp

#endif
