#ifndef APPS_ASF_FIGURE_SKELETONEDIT_H
#define APPS_ASF_FIGURE_SKELETONEDIT_H

#include <qexioplugins/acclaim/kqeximporteracclaim.h>

#include <string>
#include <unordered_set>
#include <vector>

namespace asfapp
{

/// Edits a skeleton's model, read with both frame flags false. After MakeWritable(), writing it gives the same skeleton with the
/// edits.
class KSkeletonEdit
{
public:
    explicit KSkeletonEdit(qexsdk::KQexAsfScene& pScene) : mScene(pScene) {}

    /// Sets which bones have added ends (KQexFileAcclaimAsf::GetAddedEnds), before any edit.
    void SetAddedEnds(const std::vector<std::string>& pBones);

    /// Their names after all edits.
    std::vector<std::string> GetAddedEnds() const;

    /// Renames the bone \p pFrom to \p pTo. "" on success, else an error text.
    std::string Rename(const std::string& pFrom, const std::string& pTo);

    /// Multiplies lengths and translation limits.
    void Scale(double pFactor);

    /// Removes all limits.
    void DropLimits();

    /// Removes bones without degrees of freedom if that moves no other joint: those without length, and those that are the only child
    /// of a bone other than the root, which is extended to their end. Warns about those kept.
    void RemoveDummies();

    /// Prepares the model for the writer, after all edits: lengths in the file's unit, angles in the written order.
    /// Warns about what the written file cannot hold.
    void MakeWritable(const qexsdk::KQexAmcSkeletonNotes& pNotes);

    const std::vector<std::string>& GetWarnings() const { return mWarnings; }

private:
    bool IsDummy(const qexsdk::KQexAsfNode& pBone) const;
    bool MergeIntoParent(qexsdk::HKQexAsfNode pBone);
    void WarnAboutRoot();
    void WarnAboutUnits();

    qexsdk::KQexAsfScene&                          mScene;
    std::unordered_set<const qexsdk::KQexAsfNode*> mAddedEnds; ///< Bones of mScene.
    std::vector<std::string>                       mWarnings;
};

} // namespace asfapp

#endif
