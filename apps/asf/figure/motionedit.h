#ifndef APPS_ASF_FIGURE_MOTIONEDIT_H
#define APPS_ASF_FIGURE_MOTIONEDIT_H

#include <apps/asf/console.h>
#include <apps/asf/figure/rootmotion.h>
#include <kbaselib/kbase/koutputfile.h>
#include <qexfigure/kqexfigurefile.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <string>
#include <unordered_map>

namespace asfapp
{

/// Writes the motions of a skeleton anew for its edited copy: the same frames under the bones' new names, translations scaled, the
/// root's rest frame in its values, without the values of `l`. Values that no edit touches keep every bit; comments are not kept.
class KMotionEdit
{
public:
    /// \p pOld: the skeleton as read, with the notes of its file. \p pNew: a second read of that file, not edited yet. \p pScale: the
    /// factor of lengths. \p pAllowUnmatched: take motions of another skeleton, too. All must outlive this.
    KMotionEdit(qexsdk::KQexAsfScene& pOld, const qexsdk::KQexAmcSkeletonNotes& pNotes, const qexsdk::KQexAsfScene& pNew, double pScale,
                bool pAllowUnmatched);

    /// What keeps motions of the old skeleton from fitting the edited one, as a list for a message; empty if they fit.
    std::string GetObstacles() const;

    /// Reads \p pMotion and writes it to \p pOut, which is open and stays open. \p pAsfName: name of the new skeleton's file for the
    /// first line, "" for none. False, after messages, if the motion cannot be read or written, or hardly matches the skeleton.
    bool Write(const qexsdk::KQexFigureFile& pMotion, const std::string& pAsfName, qexsdk::KOutputFile& pOut, KConsole& pConsole);

private:
    class KFrames;

    bool HasTranslations() const;

    qexsdk::KQexAsfScene&               mOld;
    const qexsdk::KQexAmcSkeletonNotes& mNotes;
    double                              mScale;
    bool                                mAllowUnmatched;

    /// The edited bone of each old one that has DOFs; edits remove no such bone.
    std::unordered_map<const qexsdk::KQexAsfNode*, const qexsdk::KQexAsfNode*> mNewBones;
};

} // namespace asfapp

#endif
