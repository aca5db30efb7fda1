#ifndef QEXIOPLUGINS_GLTF_KQEXGLTFMODEL_H
#define QEXIOPLUGINS_GLTF_KQEXGLTFMODEL_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// \file
/// A glTF file under construction: its JSON objects as plain structs, as far as the writer uses them. Indices are into the vectors
/// of KQexGltfModel, -1 for none; empty vectors and indices of -1 are not written.

namespace qexsdk
{

class KQexNode;

/// What an accessor's elements are: the number of their components.
enum KQexGltfElement
{
    eGLTF_SCALAR = 1,
    eGLTF_VEC3 = 3,
    eGLTF_VEC4 = 4,
    eGLTF_MAT4 = 16
};

/// Numbers that the format gives to words.
enum KQexGltfConstant
{
    eGLTF_TRIANGLES = 4,
    eGLTF_UNSIGNED_SHORT = 5123,
    eGLTF_FLOAT = 5126,
    eGLTF_ARRAY_BUFFER = 34962
};

/// The file.
struct KQexGltfModel
{
    /// Part of the buffer.
    struct KView
    {
        size_t mOffset = 0; ///< Bytes from the buffer's start.
        size_t mLength = 0; ///< Bytes.
        int    mTarget = 0; ///< eGLTF_ARRAY_BUFFER for vertices, else 0.
    };

    /// Numbers in a buffer view.
    struct KAccessor
    {
        int                 mView = -1;
        int                 mComponentType = eGLTF_FLOAT; ///< eGLTF_FLOAT or eGLTF_UNSIGNED_SHORT.
        KQexGltfElement     mElement = eGLTF_SCALAR;
        size_t              mCount = 0; ///< Elements.
        std::vector<double> mMin;       ///< The least value of each component.
        std::vector<double> mMax;       ///< The largest value of each component.
    };

    /// A node of the file.
    struct KNode
    {
        std::string         mName;
        std::vector<double> mTranslation; ///< Three numbers, metres.
        std::vector<double> mRotation;    ///< A quaternion x, y, z, w.
        std::vector<double> mScale;       ///< Three numbers; empty for 1.
        std::vector<int>    mChildren;
        int                 mMesh = -1;
        int                 mSkin = -1;
        const KQexNode*     mSource = nullptr; ///< Scene node whose extras it gets; null for none. Not owned.
    };

    /// Joints of a mesh.
    struct KSkin
    {
        std::string      mName;
        int              mInverseBinds = -1; ///< Accessor.
        int              mSkeleton = -1;     ///< Node.
        std::vector<int> mJoints;            ///< Nodes.
    };

    /// Triangles.
    struct KPrimitive
    {
        std::map<std::string, int> mAttributes; ///< Accessors.
        int                        mMaterial = -1;
    };

    /// A mesh of one primitive.
    struct KMesh
    {
        std::string mName;
        KPrimitive  mPrimitive;
    };

    /// A colour.
    struct KMaterial
    {
        std::string         mName;
        std::vector<double> mColor; ///< Red, green, blue, opacity: 0 to 1.
        double              mMetallic = 0.0;
        double              mRoughness = 0.0;
    };

    /// What an animation does to one property of one node: sampled linearly.
    struct KChannel
    {
        int         mInput = -1;  ///< Accessor of the times.
        int         mOutput = -1; ///< Accessor of the values.
        int         mNode = -1;
        std::string mPath; ///< "translation", "rotation" or "scale".
    };

    /// A take.
    struct KAnimation
    {
        std::string           mName;
        std::vector<KChannel> mChannels; ///< Each has a sampler of its own.
    };

    std::vector<int>        mTopNodes; ///< Of its one scene.
    std::vector<KNode>      mNodes;
    std::vector<KSkin>      mSkins;
    std::vector<KMesh>      mMeshes;
    std::vector<KMaterial>  mMaterials;
    std::vector<KAnimation> mAnimations;
    std::vector<KAccessor>  mAccessors;
    std::vector<KView>      mViews;
};

} // namespace qexsdk

#endif
