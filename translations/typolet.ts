<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1">
<context>
    <name>AboutView</name>
    <message>
        <source>Version %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AddCategoryDialog</name>
    <message>
        <source>New Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter category name…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category name</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AddSnippetDialog</name>
    <message>
        <source>New Snippet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Snippet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ApplicationLimitEditor</name>
    <message>
        <source>Expands</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Where the snippets expand</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Everywhere</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only in…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Everywhere except…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Applications</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Window classes, such as XTerm, firefox</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Windows</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add the class of a window that is open now</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No open windows were found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This session does not tell which application has the focus (Wayland): the snippets of a category limited to applications expand nowhere here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name at least one application; without one the snippets expand everywhere.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AtomicFile</name>
    <message>
        <source>what reached the disk is not what was written</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>AutoKeyPhraseFolder</name>
    <message>
        <source>%1 is not a folder that can be read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 holds no phrases: none of its files is a NAME.txt with a .NAME.json beside it.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 has no settings file %2 beside it, so its abbreviations are unknown.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a JSON object: %2 (at character %3).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it holds another JSON value</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CategoryListModel</name>
    <message>
        <source>All Snippets</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CategoryRowView</name>
    <message>
        <source>Edit Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n snippet(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Are you sure you want to delete &apos;%1&apos;?
This will permanently delete all %n snippet(s) in this category.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Move Snippets to “%1”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1
Only in %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1
Everywhere except %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message numerus="yes">
        <source>%n record(s) in your library could not be read and are not shown. The file as it was is kept in %1.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Your last change is kept in Typolet but is not on disk yet. %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Categories</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add Snippet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select a snippet to view details</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All Snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Confirm Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Are you sure you want to delete &apos;%1&apos;?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save anyway</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet cannot read your library, %1: %2. Nothing is written over it until it can be read; changes you make meanwhile are kept in Typolet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n record(s) in your library could not be read and are not shown, and no copy of the file could be kept (is the disk full?). Nothing is saved over them until a copy can be kept, or you &lt;a href=&quot;save&quot;&gt;save anyway&lt;/a&gt;.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Clear search</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n more in other categories</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Add a snippet, then type its command anywhere</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do you want to save the changes to “%1”?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>If you don&apos;t save, your changes are lost.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Move to</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete…</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Are you sure you want to delete %n snippet(s)?</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Unsaved Changes</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>EditCategoryDialog</name>
    <message>
        <source>Edit Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>EspansoMatchFile</name>
    <message>
        <source>%1 has no “matches” list, so it holds no snippets to import.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not valid YAML: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not valid YAML: %2 (line %3, column %4).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 leads to more than %2 entries once its aliases are followed, more than Typolet imports from one file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 makes more than %2 MB of snippet text once its aliases are followed, more than Typolet imports from one file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (regular expression)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (image)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 matches no file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 keeps its snippets to windows by title or by program (filter_title, filter_exec), which Typolet cannot follow; nothing was imported. Only filter_class, the window class, can be imported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 keeps its snippets to the applications of a regular expression (filter_class), which Typolet cannot follow; nothing was imported. Typolet reads a class name or names separated by “|”, such as Gedit or Alacritty|kitty.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>EvdevEngineBackend</name>
    <message>
        <source>the desktop&apos;s keyboard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>your choice in Preferences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the system&apos;s keyboard configuration (XKB_DEFAULT_LAYOUT or /etc/default/keyboard)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1, from %2; typing %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>through the compositor&apos;s virtual keyboard (any character, whatever the layout)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>through the desktop&apos;s remote desktop portal</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>through the uinput virtual keyboard (the layout&apos;s keys)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FillInForm</name>
    <message>
        <source>Type</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fill In</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fill In “%1”</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FormFiller</name>
    <message>
        <source>Typolet could not return to the window you were typing in. The snippet “%1” is on the clipboard: paste it there.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet could not return to the window you were typing in. What you typed, “%1”, is on the clipboard: paste it there.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImportCandidateModel</name>
    <message>
        <source>Skip</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keep Both</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Content</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Command Already Exists</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImportDialog</name>
    <message>
        <source>Import Snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n snippet(s) to import from “%1”.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n entry(ies) of it cannot become snippets and will be left out.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n command(s) are already in your library: choose what to do with each.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>For every command already in the library:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import Failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typed as written: %1. Typolet has no placeholder for these.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Left out: %1. Typolet cannot do these.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Some included files were not read, and their snippets are not here: %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ImportReader</name>
    <message>
        <source>%1 could not be read: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is a folder, not a file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is a named pipe, not a file: reading it could wait forever.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is a device, not a file: reading it may never end.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is a socket, not a file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a regular file.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>It is a link to %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only regular files are imported.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is too large to import (%2 MB; at most %3 MB).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 would bring this import past %2 MB in all, more than one import reads.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The import was cancelled.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 grew past %2 MB while it was read, more than Typolet imports from one file.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InputBackend</name>
    <message>
        <source>chosen by TYPOLET_BACKEND</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TYPOLET_BACKEND=%1 is not known (x11 or evdev); choosing by the session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wayland session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>X11 session</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>WAYLAND_DISPLAY is set</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no Wayland session found</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InputCheck</name>
    <message>
        <source>yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>none could be had</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> (in use)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Backend: %1 (%2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet can see and type keys here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet cannot expand snippets here until what is missing above is in place.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keyboards: none, %1 does not exist</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Virtual keyboard: %1 is writable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Virtual keyboard: %1 is not writable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keymap: from %1; layouts: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Seeing keys: %1. Typing keys: %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>X display: cannot be opened (DISPLAY is &quot;%1&quot;)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>X display: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keymap: from the X server; layouts: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Seeing keys (XInput 2): %1. Typing keys (XTEST): %2.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keyboards: %1 found, %2 readable</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>  readable: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>  cannot be read: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Other input devices that cannot be read: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Virtual keyboard: %1 does not exist (sudo modprobe uinput loads it)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typing: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>, once you allow it (through %1 until then)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InsertCandidateModel</name>
    <message>
        <source>Command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Content</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InsertSnippetWindow</name>
    <message>
        <source>Insert Snippet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Command, content or category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Up and Down choose a snippet, Return inserts it, Ctrl+C copies it, Escape closes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snippets found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview of the selected snippet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>There are no snippets yet: add some in the Typolet window.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No snippet matches “%1”.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snippets found: %1, the best %2 shown.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snippets found: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preparing the search…</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LibraryContent</name>
    <message>
        <source>%1 cannot be read: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 holds no library Typolet can read</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LibraryFile</name>
    <message>
        <source>it is a folder, not a file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>it is not a regular file</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not save to %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the file on disk cannot be read (%1), so Typolet does not write over it</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LibraryHistory</name>
    <message>
        <source>Before an edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Before an import</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Changed by another program</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Before a restore</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Damaged file, as found</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lost to a change on another computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the folder %1 cannot be made</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>LibraryTransfer</name>
    <message>
        <source>Import…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import AutoKey Folder…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export Category…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose a File to Import</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snippet files (*.json *.yml *.yaml);;Typolet library (*.json);;espanso match file (*.yml *.yaml);;All files (*)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose an AutoKey Folder to Import</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import Failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing to Import</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet Library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export Snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet library (*.json)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export Failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Export “%1”…</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%1 holds no snippets that Typolet can use (%n entry(ies) left out).</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Reading “%1”…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Import Snippets</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MessageBoxPermissionAlert</name>
    <message>
        <source>Open Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Later</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>MessageBoxes</name>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could Not Save</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PermissionGuidance</name>
    <message>
        <source>Typolet Cannot Reach the Keyboard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet needs two things from the X server to expand snippets:

</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Seeing keys: the XInput 2 extension
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Typing keys: the XTEST extension

</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This is a Wayland session: here Typolet can only serve X11 (XWayland) windows. Log in to an X11 session to use it everywhere.

</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Most X servers offer both; a server started with &quot;-extension XTEST&quot;, or a remote or nested display, may not. &quot;Open Help&quot; explains how to check and what to change. Start Typolet again afterwards.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In this Wayland session Typolet watches and types keys through the kernel&apos;s input devices, and needs access to two of them:

</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Seeing keys: reading a keyboard under /dev/input
</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> Typing keys: writing to /dev/uinput (Typolet&apos;s virtual keyboard)

</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet&apos;s udev rule grants both to the user logged in at this seat, with no group change and no new login. The one-time fix, in a terminal:

</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&quot;Open Help&quot; explains what the rule grants. Start Typolet again afterwards.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PlaceholderBar</name>
    <message>
        <source>%1 is not a placeholder Typolet knows; it is typed as written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 names no placeholder; it is typed as written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not closed with }} on its line; it is typed as written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>}} without {{ before it is typed as written (write {{{{ for literal braces).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: a placeholder cannot hold another; it is typed as written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Only the first {{cursor}} places the cursor; later ones are typed as written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Types now:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>{ }</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insert a placeholder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date in a format…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clipboard</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cursor position</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date in a Format</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Format of the date and time, for example yyyy-MM-dd or dd.MM.yyyy HH:mm:</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n problem(s) with braces. %1</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>%1 has no name for its field (write it after the colon); it is typed as written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 offers nothing to choose (write =a|b|c after its name); it is typed as written.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Asks first:</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fill-in field</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Name</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fill-in field with a default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>default</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choice</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Label</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Several lines</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (one of %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (several lines)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PreferencesView</name>
    <message>
        <source>General</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Start at Login</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Automatically start Typolet when you log in</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Undo with BackSpace</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>BackSpace right after an expansion puts the command back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Excluded Applications</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pause and resume from anywhere</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Nothing expands in these. To add one, open the tray menu while it is in use and choose &quot;Exclude&quot;.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste long snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Paste contents from</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source> characters</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Long contents are pasted, far quicker than typing; your clipboard is kept</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keyboard layout</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>In use: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>As the desktop has it</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This session lets no program take keys from the others: pause from the tray or the File menu.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This session does not tell Typolet which application is in use, so these apply in X11 sessions only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save edits automatically</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Leaving a snippet or quitting saves its changes without asking</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Insert Snippet from anywhere</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Bind “typolet --insert” to keys in your desktop&apos;s keyboard settings instead.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Count snippet use</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snippets used often come first in Insert Snippet; the counts stay on this computer</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear Counts</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear the snippet use counts</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QuitConfirmation</name>
    <message>
        <source>Quit Typolet?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Do you want to quit Typolet completely or keep it running in the background?</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This desktop has no system tray, so Typolet shows no icon while it runs in the background. To bring its window back, start Typolet again from the application menu.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Run in Background</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RestoreDialog</name>
    <message numerus="yes">
        <source>%1 and %n more</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Restore From Backup</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet keeps the last %1 versions of your library in %2. Restoring one replaces your snippets and categories with it; the library as it is now is kept as a version first.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Versions</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Kept</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Snippets</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Restore</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No earlier version has been kept yet. Typolet keeps one before an import, a restore or a change from another program, and one every ten minutes while you edit.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This version holds no snippets Typolet can read.</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Brings back %n snippet(s): %1.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Removes %n snippet(s) added since: %1.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Puts back the earlier text of %n snippet(s): %1.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>The snippets are the same as now.</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n record(s) of this version cannot be read and are left out.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Not Restored</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ShellWindows</name>
    <message>
        <source>Preferences</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>About Typolet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet Help</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SnippetDetailView</name>
    <message>
        <source>Save</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Save Changes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete Snippet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Changes saved successfully!</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Edited</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SnippetForm</name>
    <message>
        <source>Command</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter shortcut (e.g. ;hello)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Content</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter your content here…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Category</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This content is %L1 characters long. The editor shows the first %L2 and cannot change it; the command can still be changed and saved.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Match the command&apos;s case</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The command is found in any letter case: typed with a capital first letter, the content starts with a capital; typed all in capitals, the content is typed in capitals.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SnippetInserter</name>
    <message>
        <source>Typolet could not return to the window you were typing in. The snippet “%1” is on the clipboard: paste it there.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SnippetListModel</name>
    <message>
        <source>%1 (another snippet has this command too)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SnippetRowDelegate</name>
    <message>
        <source>Delete Snippet</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SnippetStore</name>
    <message>
        <source>Not saved: records in %1 could not be read, and there is no room to keep a copy of the file before it is written over. Free some space, or choose to save anyway.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>StoreMessages</name>
    <message>
        <source>A category with this name already exists</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>This command already exists</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Enter a command: a blank one would expand on every key</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Another snippet has this command too (another computer added it): the one changed last expands. Change one of the two commands.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” expands while “%2” is typed, so “%2” cannot be typed any more.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” expands while “%2” is typed, so “%2” cannot be typed.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>“%1” differs from this command only in letter case, and one of the two matches the command&apos;s case: both would expand for the same keys.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Two snippets with the command “%1” would both expand in the same application. Keep their categories to applications that do not overlap, or change one of the commands.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SyncCard</name>
    <message>
        <source>Sync</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The same snippets on every computer, through a folder that Syncthing, Nextcloud, Dropbox or git already copies. Only the library goes there; preferences, excluded applications and the pause stay on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sync through a folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stop Syncing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Computers in the folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Choose the Folder to Sync Through</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Added %n snippet(s) from the other computers in this folder.</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Nothing to add from this folder: no other computer&apos;s snippets are new here.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not syncing any more; the library stays on this computer.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder in use: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not syncing: the library is on this computer only.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no change yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 (this computer)</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%1: %n snippet(s), changed %2</source>
        <translation type="unfinished">
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Cannot read “%1” (%2); it is left as it is.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SyncFile</name>
    <message>
        <source>not valid JSON: %1 (at character %2)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>not a Typolet library</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>written by a newer Typolet (library version %1)</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SyncFolder</name>
    <message>
        <source>The folder %1 cannot be made.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet cannot write in %1.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The library cannot be read, so it is not synced: %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Changed here and on another computer at the same time: %1. The newer change is kept; the other is in Restore From Backup.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Could not write %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TrayController</name>
    <message>
        <source>About Typolet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Open Typolet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Quit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pause Expansion</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exclude This Application</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exclude “%1”</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expansion is paused, but this could not be saved yet; Typolet tries again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expansion is on again, but this could not be saved yet; Typolet tries again.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Snippet…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>New Category…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Find</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Delete…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preferences…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet Help</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Include “%1” Again</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Excluded Applications</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet — paused</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet — expanding</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TriggerOption</name>
    <message>
        <source>Expand only after a word ends</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Wait for a space, Tab, Return or punctuation after the command; it stays after the content.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Expand “%1” only after a word ends</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>When this snippet is saved, “%1” will expand only after a word ends.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TypoletApp</name>
    <message>
        <source>%1 is taken by another program; pause from the tray menu, or choose other keys in Preferences.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is taken by another program; open Insert Snippet from the tray menu, or choose other keys in Preferences.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keys Taken</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TypoletLibraryFile</name>
    <message>
        <source>Could not write %1: %2</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not valid JSON: %2 (at character %3).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a Typolet library: it needs a “version” number and ᳊tegories” and “snippets” lists.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 was written by a newer Typolet (library version %2); this one reads version %3 and older.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UsageDescription</name>
    <message>
        <source>Not used yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>today</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>yesterday</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 days ago</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>on %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Used once, last %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Used %1 times, last %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Prints the keyboard backend Typolet would use and whether it can see and type keys here, then exits: with 0 when it can, 1 when not.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Opens the Insert Snippet window of the running Typolet (starting Typolet first if none runs); bind it to keys in the desktop&apos;s keyboard settings where Typolet cannot take keys itself (Wayland).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet, a text expander: typing a snippet&apos;s command in any application replaces it with the snippet&apos;s text.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet needs an X11 display and could not open one (DISPLAY is &quot;%1&quot;).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Typolet needs a Wayland or X11 display for its windows and could not open one (WAYLAND_DISPLAY is &quot;%1&quot;, DISPLAY is &quot;%2&quot;).</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Changed on Two Computers</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Restore From Backup…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Insert Snippet…</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
